// qvledger-json: the accounting logs of print servers as JSON Lines.  Options, messages and statuses are
// those of qvledger, whose driver it shares.
#include <clocale>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "tool/json/json_lines.h"
#include "tool/messages.h"
#include "tool/options.h"
#include "tool/program.h"
#include "tool/progress.h"
#include "tool/run.h"
#include "tool/stop.h"

using namespace qvledger;

constexpr int kStatusLost =
    74; // the lines could not be written; as for an input/output error in other programs

static const char *const kUsage = "Command line usage: qvledger-json [-h] [-V] [-t] [-o <filename>]\n"
                                  "   [-s <start date>]\n"
                                  "   [-e <end date>] [-p <path>]\n"
                                  "   [-O <path>] serverName ...\n";

namespace {

class JsonWriter final : public LogOutput, JsonEvents {
public:
    explicit JsonWriter(bool givenIsTyped) : isTyped(givenIsTyped) {}
    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
               std::FILE *givenStream) override {
        stream = givenStream;
        const ALA_retCode_t ended = writeJsonLines(handle, log, jsonLog(name), givenStream, *this);
        if (ended != ALA_N_NORMAL && ended != ALA_A_LAST_ATTRIBUTE)
            tellFailure(ended, "qvledger-json internal error: ");
        return ended == ALA_A_LAST_ATTRIBUTE;
    }
    void passOver(const LogName &name, std::FILE *givenStream) override {
        writeJsonOfUnreadLog(jsonLog(name), givenStream);
    }
    void readFailed() override { status_ = ALA_A_FAIL_READ_LOG_FILE; }
    int status() const { return status_; }
    bool recordWritten() override {
        countRecord();
        return !mustStop(stream);
    }
    void recordFailed(ALA_retCode_t code) override { tellFailure(code, "unable to read record: "); }

private:
    JsonLog jsonLog(const LogName &name) const { return {name.server, name.file, name.date, isTyped}; }

    bool isTyped;
    std::FILE *stream = nullptr;
    int status_ = 0; // of a run in which nothing else failed
};

} // namespace

// No name is empty, and none is given twice: its jobs would be counted twice.
static bool areNames(std::span<const char *const> servers) {
    std::set<std::string_view> names(servers.begin(), servers.end());
    return names.size() == servers.size() && !names.contains("");
}

static int runJson(const Options &options) {
    std::vector<const char *> servers(options.moreServers, options.moreServers + options.numMoreServers);
    servers.push_back(options.serverName);
    const bool isValid = options.errflg == 0 && options.serverName != nullptr && areNames(servers);
    if (options.helpflg != 0 || (options.verflg == 0 && !isValid)) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    JsonWriter writer(options.typeflg != 0);
    const int status = runWith(options, 1 + options.numMoreServers, writer, kStatusLost);
    return status != 0 ? status : writer.status();
}

int main(int argc, char **argv) {
    // Messages in the user's language; what the lines hold is the same for everyone.
    return runProgram(argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        return runJson(readOptions(count, values, kJsonLetters));
    });
}
