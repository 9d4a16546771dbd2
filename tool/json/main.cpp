// qvledger-json: writes the accounting logs of print servers as JSON Lines.  It shares the run (tool/run.h),
// the options, the messages and the statuses with qvledger.
#include <clocale>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tool/json/json_lines.h"
#include "tool/json/state_file.h"
#include "tool/messages.h"
#include "tool/opened_logs.h"
#include "tool/options.h"
#include "tool/program.h"
#include "tool/progress.h"
#include "tool/run.h"
#include "tool/stop.h"

using namespace qvledger;

static const char *const kUsage = "Command line usage: qvledger-json [-h] [-V] [-t] [-c <state file>]\n"
                                  "   [-o <filename>] [-s <start date>] [-e <end date>]\n"
                                  "   [-p <path>] [-O <path>] serverName ...\n";

namespace {

class JsonWriter final : public LogOutput, JsonOutput {
public:
    // state: null without -c.
    JsonWriter(bool isTyped, StateFile *state) : isTyped_(isTyped), state_(state) {}
    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
               LineWriter &report) override {
        report_ = &report;
        if (opened_.isRepeated(name)) {
            status_ = ALA_A_FAIL_TO_OPEN_LOG_FILE;
            const char *unread = opened_.unread().c_str();
            skip({name.server, unread, unread, name.date}, report);
            return false;
        }
        const ALA_retCode_t ended = writeLog(handle, log, name);
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
    void endRun(LineWriter &report) override;
    bool keepsReport() const override { return mayBeNoted_ && hasLines_; }
    int status() const { return status_; }
    void line(std::string_view text) override {
        hasLines_ = true;
        report_->put(text.substr(0, text.size() - 1));
        report_->endLine();
    }
    bool recordWritten(ALA_record_t record) override {
        countRecord();
        if (state_ != nullptr)
            written_.addRecord(log_, record);
        return !mustStop(report_->failed());
    }
    void recordFailed(ALA_retCode_t code) override { reportFailure(code, "unable to read record: "); }

private:
    JsonLog jsonLog(const LogName &name) const { return {name.server, name.file, name.date, isTyped_}; }
    ALA_retCode_t writeLog(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name);

    bool isTyped_;
    StateFile *state_;
    ALA_acctLogHandle_t log_ = nullptr; // the current log
    WrittenLog written_;                // how far the current log is written
    bool hasLines_ = false;             // a line was written
    bool mayBeNoted_ = false;           // the state file may say that the lines are written
    LineWriter *report_ = nullptr;
    OpenedLogs opened_;
    // Status for what the writer itself found, such as an unreadable log.  It is the exit status if
    // the run returns 0, and kStatusLostOutput in any case.
    int status_ = 0;
};

} // namespace

// Writes the records that no earlier run with the state file wrote, or all records without a state file.
ALA_retCode_t JsonWriter::writeLog(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name) {
    JsonLog json = jsonLog(name);
    log_ = log;
    if (state_ != nullptr) {
        written_ = WrittenLog();
        written_.server = name.server;
        written_.file = name.file;
        written_.date = name.date;
        if (std::optional<WrittenLog> before = state_->logs().take(log, name)) {
            written_ = *std::move(before);
            continueAt(log, written_.end);
        }
        json.recordsBefore = written_.records;
        json.isCompleteBefore = written_.isComplete;
    }
    const ALA_retCode_t ended = writeJsonLines(handle, log, json, *this, &written_.isComplete);
    if (state_ != nullptr)
        state_->logs().add(std::move(written_));
    return ended;
}

void JsonWriter::endRun(LineWriter &report) {
    if (state_ == nullptr)
        return;
    const char *why = report.whyNotSafe();
    if (why == nullptr)
        why = report.file().whyNotInPlace();
    if (report.failed())
        return; // reported already
    if (why != nullptr)
        DisplayMsg(kMsgStateKept, state_->name(), why);
    mayBeNoted_ = why == nullptr;
    if (!mayBeNoted_ || !state_->save())
        status_ = kStatusLostOutput;
}

static int runJson(const Options &options) {
    const bool isValid = options.errflg == 0 && areDistinctNames(serversOf(options)) &&
                         (options.stateFile == nullptr || *options.stateFile != '\0');
    if (options.helpflg != 0 || (options.verflg == 0 && !isValid)) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    std::optional<StateFile> state;
    // Check the dates before the state file is created.
    if (options.stateFile != nullptr && options.verflg == 0 &&
        (!datesAreValid(options) || !state.emplace(options.stateFile).open(options.ofile)))
        return kStatusBadStart;
    JsonWriter writer(options.typeflg != 0, state ? &*state : nullptr);
    const int status = runWith(options, 1 + options.numMoreServers, writer, kStatusLostOutput);
    return status == 0 || writer.status() == kStatusLostOutput ? writer.status() : status;
}

int main(int argc, char **argv) {
    // Sets the user's language for messages only: the lines do not depend on the locale.
    return runProgram("qvledger-json", argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        replaceLongOptions(count, values);
        return runJson(readOptions(count, values, kJsonLetters));
    });
}
