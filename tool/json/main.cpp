// qvledger-json: writes the accounting logs of print servers as JSON Lines.  It shares the run (tool/run.h),
// the options, the messages and the statuses with qvledger.
#include <clocale>
#include <string>
#include <string_view>

#include "tool/json/json_lines.h"
#include "tool/last_log.h"
#include "tool/messages.h"
#include "tool/options.h"
#include "tool/program.h"
#include "tool/progress.h"
#include "tool/run.h"
#include "tool/stop.h"

using namespace qvledger;

static const char *const kUsage = "Command line usage: qvledger-json [-h] [-V] [-t] [-o <filename>]\n"
                                  "   [-s <start date>]\n"
                                  "   [-e <end date>] [-p <path>]\n"
                                  "   [-O <path>] serverName ...\n";

namespace {

class JsonWriter final : public LogOutput, JsonOutput {
public:
    explicit JsonWriter(bool isTyped) : isTyped_(isTyped) {}
    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
               LineWriter &report) override {
        report_ = &report;
        if (last_.isRepeated(name)) {
            status_ = ALA_A_FAIL_TO_OPEN_LOG_FILE;
            const char *unread = last_.unread().c_str();
            skip({name.server, unread, unread, name.date}, report);
            return false;
        }
        const ALA_retCode_t ended = writeJsonLines(handle, log, jsonLog(name), *this);
        if (ended != ALA_N_NORMAL && ended != ALA_A_LAST_ATTRIBUTE)
            reportFailure(ended, "qvledger-json internal error: ");
        return ended == ALA_A_LAST_ATTRIBUTE;
    }
    void skip(const LogName &name, LineWriter &report) override {
        report_ = &report;
        writeJsonOfUnreadLog(jsonLog(name), *this);
    }
    void readFailed() override { status_ = ALA_A_FAIL_READ_LOG_FILE; }
    void listIsCut(const char *server, LineWriter &report) override {
        status_ = ALA_A_FAIL_OPEN_DIR;
        report_ = &report;
        writeJsonOfIncompleteServer(server, *this);
    }
    int status() const { return status_; }
    void line(std::string_view text) override {
        report_->put(text.substr(0, text.size() - 1));
        report_->endLine();
    }
    bool recordWritten() override {
        countRecord();
        return !mustStop(report_->failed());
    }
    void recordFailed(ALA_retCode_t code) override { reportFailure(code, "unable to read record: "); }

private:
    JsonLog jsonLog(const LogName &name) const { return {name.server, name.file, name.date, isTyped_}; }

    bool isTyped_;
    LineWriter *report_ = nullptr;
    LastLog last_;
    // Status for what the writer itself found, such as an unreadable log.  It is the exit status if
    // the run returns 0.
    int status_ = 0;
};

} // namespace

static int runJson(const Options &options) {
    const bool isValid = options.errflg == 0 && areDistinctNames(serversOf(options));
    if (options.helpflg != 0 || (options.verflg == 0 && !isValid)) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    JsonWriter writer(options.typeflg != 0);
    const int status = runWith(options, 1 + options.numMoreServers, writer, kStatusLostOutput);
    return status != 0 ? status : writer.status();
}

int main(int argc, char **argv) {
    // Sets the user's language for messages only: the lines do not depend on the locale.
    return runProgram("qvledger-json", argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        return runJson(readOptions(count, values, kJsonLetters));
    });
}
