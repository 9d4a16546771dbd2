#include "tool/server_report.h"

#include <cstring>

#include "ala/driver/deletion.h"
#include "ala/driver/session.h"
#include "platform/os.h"
#include "service/log/log.h"
#include "tool/exit_status.h"
#include "tool/file_lock.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/rights.h"
#include "tool/stop.h"

using namespace qvledger;

namespace {

// State of the loop over the logs.
struct LoopState {
    bool noLogFound = true;
    bool deletedAny = false;
    bool errOut = false;
    ALA_retCode_t finalErr = ALA_N_NORMAL; // code of the last failure

    void fail(ALA_retCode_t code) {
        errOut = true;
        finalErr = code;
    }
};

// Checks the report before each deletion.  Prints a message about each log that was renamed for its deletion
// and could not be renamed back.
class Deletion final : public DeletionWatch {
public:
    explicit Deletion(const ReportFile &report) : report_(report) {}
    const char *objection() override { return report_.whyNotInPlace(); }
    void leftAside(const char *path, const char *why) override { DisplayMsg(kMsgStillRenamed, path, why); }

private:
    const ReportFile &report_;
};

} // namespace

// Registers the server and lists its logs.  With -d, also restores logs whose deletion was interrupted.
// Returns 0, or the code of a failure, which was reported.
static ALA_retCode_t startSession(const Options &options, const char *logPath, const LineWriter &report,
                                  ServerSession &session) {
    if (const ALA_retCode_t result = registerServer(options, logPath, session); result != ALA_N_NORMAL)
        return result;
    if (options.dflg != 0) {
        Deletion deletion(report.file());
        restoreLogs(session.mainh, deletion);
    }
    const ALA_retCode_t result = listLogs(options, session);
    if (result == ALA_N_NORMAL)
        reportEqualDates(session, dateRange(options));
    return result;
}

static void logKept(std::int32_t date, const char *why) {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the log for the date %d is not deleted: %s", date, why);
}

// Deletes a log that was read completely.
static void deleteLog(ALA_handle_t mainh, const ALA_time &date, const ReadLog &read, const LineWriter &report,
                      LoopState &state) {
    Deletion deletion(report.file());
    bool kept = false;
    const ALA_retCode_t result = deleteReadLog(mainh, &date, read, deletion, &kept);
    if (result == ALA_A_TRY_TO_DELETE_CUR_DAY_LOG || kept)
        return;
    if (result == ALA_N_NORMAL) {
        state.deletedAny = true;
        return;
    }
    DisplayMsgFromErr(static_cast<std::uint32_t>(result), ALA__NumFromDate(&date));
    logFailure(nullptr, result);
    state.fail(result);
}

static ALA_retCode_t openLog(const Options &options, ALA_handle_t mainh, const ALA_time &date,
                             ALA_acctLogHandle_t *logh) {
    const LentRights rights(options.acctPath2 == nullptr);
    if (options.dflg == 0)
        return ALA_Open(mainh, &date, logh);
    return openForDeletion(mainh, &date, lockFile, logh);
}

// Reports one log, and deletes it with -d.
static void processLog(const Options &options, ALA_handle_t mainh, const ALA_time &logDate, LogName name,
                       LineWriter &report, LogOutput &writer, LoopState &state) {
    const std::int32_t date = name.date;
    ALA_acctLogHandle_t logh = nullptr;
    if (const ALA_retCode_t result = openLog(options, mainh, logDate, &logh); result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), date);
        logFailure(nullptr, result);
        writer.skip(name, report);
        return state.fail(result);
    }
    if (logh == nullptr)
        return; // a signal ended the wait for another run's lock
    name.file = logFileName(logh);
    const bool complete = writer.write(mainh, logh, name, report);
    if (const std::int32_t error = ALA_ReadError(logh); error != 0) {
        DisplayMsg(kMsgReadError, name.file, std::strerror(error));
        writer.readFailed();
    }
    ReadLog read;
    const char *why = complete ? nullptr : "not all of it is in the report";
    if (options.dflg != 0 && why == nullptr)
        why = keepReadLog(logh, read);
    const ALA_retCode_t closed = ALA_Close(mainh, &logh);
    state.noLogFound = false;
    if (closed != ALA_N_NORMAL) {
        DisplayMsg(kMsgCloseFailed, date);
        logFailure(nullptr, closed);
        state.fail(closed);
    }
    if (options.dflg == 0)
        return;
    if (why == nullptr)
        why = report.whyNotSafe();
    if (why != nullptr)
        return logKept(date, why);
    deleteLog(mainh, logDate, read, report, state);
}

static void processLogs(const Options &options, const ServerSession &session, LineWriter &report,
                        LogOutput &writer, LoopState &state) {
    const DateRange range = dateRange(options);
    startProgress(report.file().isFile(), countLogs(session, range));
    const ALA_name *file = session.nameList;
    for (const dateNode *node = session.dateList; node != nullptr; node = node->next, file = file->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        const LogName name{options.serverName, file->logName, file->logName, date};
        if (mustStop(report.failed()))
            return;
        if (!range.contains(date))
            writer.outsideRange(name);
        if (date > range.last) // the list is sorted by date
            return;
        if (date < range.first)
            continue;
        progressToLog(date);
        processLog(options, session.mainh, node->date, name, report, writer, state);
    }
}

// Does the steps before the first log.  Returns 0, or the status of a failure, which was reported.
static int prepare(const Options &options, const LineWriter &report, ServerSession &session) {
    Malloced<char> madePath;
    const char *logPath = findLogPath(options, madePath);
    if (logPath == nullptr)
        return reportNoLogPath();
    return startSession(options, logPath, report, session);
}

ServerResult qvledger::reportServer(const Options &options, LineWriter &report, LogOutput &writer) {
    ServerSession session;
    if (const int status = prepare(options, report, session); status != 0)
        return {.status = status, .failed = status != kStatusNoLogs};
    LoopState state;
    processLogs(options, session, report, writer, state);
    if (session.isListCut)
        writer.listIsCut(options.serverName, report);
    writer.end();
    endProgress();
    static_cast<void>(report.flush()); // flush() reports a failure
    const bool askedToEnd = OS_NotedSignal() != 0;
    ServerResult result = {
        .failed = state.errOut || askedToEnd, .foundLog = !state.noLogFound, .deletedAny = state.deletedAny};
    if (const ALA_retCode_t ended = endSession(session); ended != ALA_N_NORMAL) {
        result.status = ended; // `failed` does not change: the report is not affected
    } else if (state.noLogFound && !result.failed && !report.failed()) {
        DisplayMsg(kMsgNoLogs);
        result.status = kStatusNoLogs;
    } else {
        result.status = state.errOut ? state.finalErr : 0;
    }
    return result;
}
