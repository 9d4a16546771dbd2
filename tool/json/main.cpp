// qvledger-json: the accounting logs of print servers as JSON Lines.  Options, messages and statuses are
// those of qvledger, whose driver it shares.
#include <clocale>
#include <new>

#include "platform/os.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/json/json_lines.h"
#include "tool/messages.h"
#include "tool/options.h"
#include "tool/progress.h"
#include "tool/rights.h"
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
    bool recordWritten() override {
        countRecord();
        return !mustStop(stream);
    }
    void recordFailed(ALA_retCode_t code) override { tellFailure(code, "unable to read record: "); }

private:
    JsonLog jsonLog(const LogName &name) const { return {name.server, name.file, name.date, isTyped}; }

    bool isTyped;
    std::FILE *stream = nullptr;
};

} // namespace

static int runJson(const Options &options) {
    const bool isValid = options.errflg == 0 && options.serverName != nullptr;
    if (options.helpflg != 0 || (options.verflg == 0 && !isValid)) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    try {
        JsonWriter writer(options.typeflg != 0);
        return runWith(options, 1 + options.numMoreServers, writer, kStatusLost);
    } catch (const std::bad_alloc &) {
        DisplayMsg(kMsgNoMemory);
        return kStatusNoMemory;
    }
}

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_NoteEndSignals();
    dropLentRights();
    // Messages in the user's language; what the lines hold is the same for everyone.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    LOG_Init("stdout", "E");
    MSG_UsageBegin("qvledg");
    const int status = runJson(readOptions(argc, argv, kJsonLetters));
    MSG_UsageEnd();
    LOG_Flush(); // which a signal's end would not do
    OS_EndBySignal();
    return status;
}
