#include "tool/check/check_run.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "ala/driver/check.h"
#include "ala/driver/session.h"
#include "platform/os.h"
#include "service/messages/message.h"
#include "tool/check/fields.h"
#include "tool/check/log_table.h"
#include "tool/check/missing_logs.h"
#include "tool/check/reasons.h"
#include "tool/check/set_up_table.h"
#include "tool/messages.h"
#include "tool/program.h"
#include "tool/progress.h"
#include "tool/rights.h"
#include "tool/run.h"
#include "tool/server_session.h"
#include "tool/stop.h"

using namespace qvledger;

namespace {

class Watch final : public CheckWatch {
public:
    explicit Watch(const char *name) : name_(name) {}
    bool goOn(std::int64_t) override {
        redrawProgress();
        return !mustStop(std::ferror(stdout) != 0);
    }
    void record() override { countRecord(); }
    void stray(std::int64_t begin, std::int64_t end, FoundNext next) override {
        static constexpr std::uint32_t kMessages[] = {kMsgCheckStrayInStep, kMsgCheckStrayOutOfStep,
                                                      kMsgCheckStrayAtEnd};
        if (name_ != nullptr)
            DisplayMsg(kMessages[static_cast<std::size_t>(next)], name_, std::to_string(begin).c_str(),
                       std::to_string(end).c_str());
    }

private:
    const char *name_; // name of the log; null: stray bytes are not reported
};

// The findings that determine the exit status.
struct Findings {
    int failure = 0;         // status of the first server that could not be checked
    bool noLogs = false;     // a server has no log in the date range
    int unread = 0;          // status for the last unreadable log or incomplete list of logs
    bool damaged = false;    // a log is cut or damaged
    bool lost = false;       // a line or a copy could not be written
    bool incomplete = false; // a name is not a log's, or a day has no log

    int status() const {
        if (failure != 0)
            return failure;
        if (lost || damaged)
            return lost ? kStatusLostOutput : kStatusDamaged;
        if (unread != 0)
            return unread;
        if (noLogs)
            return kStatusNoLogs;
        return incomplete ? kStatusIncomplete : 0;
    }
};

class CheckRun {
public:
    CheckRun(const Options &options, std::span<const char *const> servers)
        : options_(options), servers_(servers), range_(dateRange(options)) {}

    int run();

private:
    int checkServer();
    int start(const std::string &logPath, ServerSession &session);
    int checkLogs(ServerSession &session);
    void checkListed(const ServerSession &session);
    void checkLog(ALA_handle_t handle, const char *name);
    void writeUnread(const char *name, const CheckResult &result);
    void checkCompleteness(const ServerSession &session, const std::string &logPath);
    void save(CheckedLog &log, const char *name);

    Options options_; // serverName is the current server
    std::span<const char *const> servers_;
    DateRange range_;
    char **environment_ = OS_KeepEnvironment();
    Findings findings_;
    std::unordered_set<std::string> checked_; // names of the server's logs that were checked
    bool hasLogs_ = false;                    // a log is in the date range
    bool savesIntoLogs_ = false;              // -S names the log directory: a copy would be a log
    bool willListAgain_ = false;              // if a log disappears, the logs are listed again
    bool hasMissing_ = false;                 // a listed log has disappeared
};

} // namespace

static bool isSameFolder(const char *logs, const char *saved) {
    OS_fileIdentity ofLogs = {};
    OS_fileIdentity ofSaved = {};
    if (saved == nullptr || OS_IdentifyTarget(saved, &ofSaved) != 0)
        return false;
    const LentRights rights(true); // the user may have no access to the log directory
    return OS_IdentifyTarget(logs, &ofLogs) == 0 && OS_IsSameFile(ofLogs, ofSaved);
}

// Registers the server and lists its logs.  Returns 0, or the code of a failure, which was reported.
int CheckRun::start(const std::string &logPath, ServerSession &session) {
    const ALA_retCode_t result = registerServer(options_, logPath.c_str(), session);
    return result == ALA_N_NORMAL ? listLogs(options_, session) : result;
}

// ---- Logs ----

// Writes the line of a log that was not read, and notes the status.
void CheckRun::writeUnread(const char *name, const CheckResult &result) {
    const auto &[state, reason] = whyUnread(result);
    const bool cannotBeSaved = state == LogState::Damaged || state == LogState::Cut;
    if (cannotBeSaved)
        findings_.damaged = true;
    else
        findings_.unread = result.code;
    writeUnreadLogLine(options_.serverName, name, state, reason.c_str());
    if (cannotBeSaved && options_.saveFolder != nullptr)
        DisplayMsg(kMsgCheckNotSaved, name);
}

void CheckRun::save(CheckedLog &log, const char *name) {
    const std::string path = std::string(options_.saveFolder) + "/" + name;
    if (savesIntoLogs_) {
        findings_.lost = true;
        DisplayMsg(kMsgCheckSaveFailed, name, path.c_str(), "the folder is the log directory");
        return;
    }
    Watch watch(name);
    const CheckResult result = saveLog(log, path.c_str(), watch);
    if (result.outcome == CheckOutcome::Done)
        return DisplayMsg(kMsgCheckSaved, name, path.c_str());
    if (result.outcome == CheckOutcome::GaveUp)
        return;
    findings_.lost = true;
    DisplayMsg(kMsgCheckSaveFailed, name, path.c_str(), whyNotSaved(result).c_str());
}

void CheckRun::checkLog(ALA_handle_t handle, const char *name) {
    OpenCheckedLog log;
    CheckResult result = {};
    {
        const LentRights rights(options_.acctPath2 == nullptr);
        result = openToCheck(handle, name, log);
    }
    if (result.outcome == CheckOutcome::CannotOpen && result.error == ENOENT && willListAgain_) {
        hasMissing_ = true;
        return;
    }
    checked_.insert(name);
    if (result.outcome != CheckOutcome::Done)
        return writeUnread(name, result);
    LogSummary summary;
    Watch watch(nullptr);
    result = qvledger::checkLog(handle, *log, watch, summary);
    eraseProgress();
    if (result.outcome == CheckOutcome::GaveUp)
        return;
    if (result.outcome != CheckOutcome::Done) {
        findings_.unread = result.code;
        return writeUnreadLogLine(options_.serverName, name, LogState::Unreadable,
                                  withReason("cannot be read to its end", result.error).c_str());
    }
    const LogState state = stateOf(summary);
    writeLogLine(options_.serverName, name, state, summary);
    if (state != LogState::Cut && state != LogState::Damaged)
        return;
    findings_.damaged = true;
    if (options_.saveFolder == nullptr)
        return;
    std::fflush(stdout);
    if (summary.headerIsDamaged)
        DisplayMsg(kMsgCheckNotSaved, name);
    else
        save(*log, name);
}

// Progress is shown only if the tables go to a file: other output to the terminal would break the progress
// line.
static bool outputIsFile() {
    OS_fileIdentity identity = {};
    return OS_IdentifyDescriptor(_fileno(stdout), &identity) == 0 && identity.regular;
}

void CheckRun::checkListed(const ServerSession &session) {
    const ALA_name *name = session.nameList;
    for (const dateNode *node = session.dateList; node != nullptr && !mustStop(std::ferror(stdout) != 0);
         node = node->next, name = name->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        if (checked_.contains(name->logName))
            continue;
        if (!isLogsName(options_.serverName, name->logName)) {
            checked_.insert(name->logName);
            findings_.incomplete = true;
            continue;
        }
        if (!range_.contains(date))
            continue;
        hasLogs_ = true;
        progressToLog(date);
        checkLog(session.mainh, name->logName);
    }
}

int CheckRun::checkLogs(ServerSession &session) {
    startProgress(outputIsFile(), countLogs(session, range_));
    checked_.clear();
    hasLogs_ = false;
    hasMissing_ = false;
    willListAgain_ = true;
    checkListed(session);
    if (hasMissing_) { // the log may have been renamed: a server renames its current log at midnight
        willListAgain_ = false;
        static_cast<void>(ALA_FreeDateList(&session.dateList)); // listLogs() makes new lists
        static_cast<void>(ALA_FreeNameList(&session.nameList));
        if (const ALA_retCode_t result = listLogs(options_, session); result != ALA_N_NORMAL) {
            endProgress();
            return result;
        }
        checkListed(session);
    }
    endProgress();
    if (session.isListCut)
        findings_.unread = ALA_A_FAIL_OPEN_DIR;
    if (hasLogs_ || mustStop(std::ferror(stdout) != 0))
        return 0;
    DisplayMsg(kMsgNoLogs);
    return kStatusNoLogs;
}

// Looks for files with the user's own rights only: the lent rights must not reveal names of other files.
void CheckRun::checkCompleteness(const ServerSession &session, const std::string &logPath) {
    if (mustStop(std::ferror(stdout) != 0))
        return;
    int error = 0;
    if (writeNamesLikeLogs(options_, logPath, error) != 0)
        findings_.incomplete = true;
    if (error != 0 && !session.isListCut) {
        DisplayMsg(kMsgListCut, options_.serverName, std::strerror(error));
        findings_.unread = ALA_A_FAIL_OPEN_DIR;
    }
    if (options_.quietflg == 0 && !session.isListCut &&
        writeMissingDays(options_.serverName, session, range_) != 0)
        findings_.incomplete = true;
}

// ---- The run ----

// Writes the two tables of the current server.  Returns 0, or the exit status if the logs were not checked.
int CheckRun::checkServer() {
    ServerSession session;
    std::string logPath;
    OS_RestoreEnvironment(environment_); // without the settings of the previous server
    int status = checkSetUp(options_, logPath);
    if (status == 0)
        status = start(logPath, session);
    savesIntoLogs_ = status == 0 && isSameFolder(logPath.c_str(), options_.saveFolder);
    writeLogHeader();
    if (status == 0)
        status = checkLogs(session);
    if (status == 0 || status == kStatusNoLogs)
        checkCompleteness(session, logPath);
    if (status != 0 && servers_.size() > 1)
        DisplayMsg(kMsgCheckServerFailed, options_.serverName, status);
    return status;
}

int CheckRun::run() {
    for (const char *const server : servers_) {
        if (mustStop(std::ferror(stdout) != 0))
            break;
        if (server != servers_.front())
            std::fputc('\n', stdout);
        options_.serverName = server;
        const int status = checkServer();
        if (status == kStatusNoLogs)
            findings_.noLogs = true;
        else if (findings_.failure == 0)
            findings_.failure = status;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const int error = outputError() != 0 ? outputError() : OS_WriteError();
        DisplayMsg(kMsgCheckOutputLost, std::strerror(error));
        findings_.lost = true;
    }
    return findings_.status();
}

// Checks the options and the server names.  False for an unknown option, no server, or an empty name.  Also
// false for an empty folder of -S, because it would mean the root folder.
static bool isValid(const Options &options, std::span<const char *const> servers) {
    const auto isEmpty = [](const char *text) { return *text == '\0'; };
    return options.errflg == 0 && !servers.empty() && std::ranges::none_of(servers, isEmpty) &&
           (options.saveFolder == nullptr || !isEmpty(options.saveFolder));
}

int qvledger::runCheck(const Options &options) {
    if (options.helpflg != 0) {
        DisplayMsg(kMsgCheckUsage);
        return 0;
    }
    if (options.verflg != 0) {
        MSG_fprintf(stdout, "%s\n", compiledVersionString);
        return 0;
    }
    const std::vector<const char *> servers = serversOf(options);
    if (!isValid(options, servers)) {
        DisplayMsg(kMsgCheckUsage);
        return kStatusUsage;
    }
    checkSystem();
    return datesAreValid(options) ? CheckRun(options, servers).run() : kStatusBadStart;
}
