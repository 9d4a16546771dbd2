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
#include "tool/check/set_up_table.h"
#include "tool/facility.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/rights.h"
#include "tool/run.h"
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
        static constexpr std::uint32_t kMessages[] = {kMsgCheckLeftOutInStep, kMsgCheckLeftOutOutOfStep,
                                                      kMsgCheckLeftOutAtEnd};
        if (name_ != nullptr)
            DisplayMsg(kMessages[static_cast<std::size_t>(next)], name_, std::to_string(begin).c_str(),
                       std::to_string(end).c_str());
    }

private:
    const char *name_; // null: ranges are not reported
};

// What the exit status comes from.
struct Outcome {
    int ended = 0;        // what ended the turn of the first server for which something did
    bool noLogs = false;  // of some server
    int closed = 0;       // of a log that could not be read
    bool damaged = false; // some log
    bool lost = false;    // some line, or a copy

    int status() const {
        if (ended != 0)
            return ended;
        if (lost || damaged)
            return lost ? kStatusLostOutput : kStatusDamaged;
        return closed == 0 && noLogs ? kStatusNoLogs : closed;
    }
};

class CheckRun {
public:
    CheckRun(const Options &givenOptions, std::span<const char *const> givenServers)
        : options(givenOptions), servers(givenServers), range(dateRange(givenOptions)) {}

    int run();

private:
    int turn();
    int start(const std::string &logPath, Facility &facility);
    int checkLogs(Facility &facility);
    void checkListed(const Facility &facility);
    void checkLog(ALA_handle_t handle, const char *name);
    void noteClosed(const char *name, const CheckResult &result);
    void save(CheckedLog &log, const char *name);

    Options options; // of the server whose turn it is
    std::span<const char *const> servers;
    DateRange range;
    char **environment = OS_KeepEnvironment();
    Outcome outcome;
    std::unordered_set<std::string> looked; // at these logs of the server
    bool isFolderOfLogs = false;            // that of -S: a copy would be a log
    bool listsAgain = false;                // if one has gone meanwhile
    bool hasGone = false;
};

} // namespace

static bool isSameFolder(const char *logs, const char *saved) {
    OS_fileIdentity ofLogs = {};
    OS_fileIdentity ofSaved = {};
    if (saved == nullptr || OS_IdentifyTarget(saved, &ofSaved) != 0)
        return false;
    const LentRights rights(true); // it may be one that the caller cannot look at
    return OS_IdentifyTarget(logs, &ofLogs) == 0 && OS_IsSameFile(ofLogs, ofSaved);
}

// Registers and lists the server's logs.
int CheckRun::start(const std::string &logPath, Facility &facility) {
    const ALA_retCode_t result = registerServer(options, logPath.c_str(), facility);
    return result == ALA_N_NORMAL ? listLogs(options, facility) : result;
}

// ---- Logs ----

static std::string withReason(const char *text, int error) {
    return error != 0 ? std::string(text) + ": " + std::strerror(error) : text;
}

// A log that was not read.
void CheckRun::noteClosed(const char *name, const CheckResult &result) {
    LogState state = LogState::Unreadable;
    std::string reason;
    switch (result.outcome) {
    case CheckOutcome::CannotOpen:
        reason = withReason("cannot be opened", result.error);
        break;
    case CheckOutcome::NotAFile:
        reason = "no file on a disk";
        break;
    case CheckOutcome::NotAdmitted:
        state = LogState::NotAdmitted;
        reason = "the access list does not admit the caller";
        break;
    case CheckOutcome::CannotRead:
        reason = withReason("cannot be read", result.error);
        break;
    case CheckOutcome::HeaderIsCut:
        state = LogState::Cut;
        reason = "the file ends inside its header";
        break;
    case CheckOutcome::HeaderIsDamaged:
        state = LogState::Damaged;
        reason = "the header is damaged: nobody knows whom the log admits";
        break;
    default:
        reason = "cannot be opened or read";
        break;
    }
    const bool cannotBeSaved = state == LogState::Damaged || state == LogState::Cut;
    if (cannotBeSaved)
        outcome.damaged = true;
    else
        outcome.closed = result.code;
    writeClosedLogLine(options.serverName, name, state, reason.c_str());
    if (cannotBeSaved && options.saveFolder != nullptr)
        DisplayMsg(kMsgCheckNotSaved, name);
}

static std::string whyNotSaved(const CheckResult &result) {
    switch (result.outcome) {
    case CheckOutcome::Failed:
        return "out of memory";
    case CheckOutcome::CannotRead:
        return "it cannot be read to its end";
    case CheckOutcome::NotSynced:
        return withReason("it is there, but its folder cannot be put on the disk", result.error);
    default:
        return std::strerror(result.error);
    }
}

void CheckRun::save(CheckedLog &log, const char *name) {
    const std::string path = std::string(options.saveFolder) + "/" + name;
    if (isFolderOfLogs) {
        outcome.lost = true;
        DisplayMsg(kMsgCheckSaveFailed, name, path.c_str(), "the logs' own folder");
        return;
    }
    Watch watch(name);
    const CheckResult result = saveLog(log, path.c_str(), watch);
    if (result.outcome == CheckOutcome::Done)
        return DisplayMsg(kMsgCheckSaved, name, path.c_str());
    if (result.outcome == CheckOutcome::GaveUp)
        return;
    outcome.lost = true;
    DisplayMsg(kMsgCheckSaveFailed, name, path.c_str(), whyNotSaved(result).c_str());
}

void CheckRun::checkLog(ALA_handle_t handle, const char *name) {
    OpenCheckedLog log;
    CheckResult result = {};
    {
        const LentRights rights(options.acctPath2 == nullptr);
        result = openToCheck(handle, name, log);
    }
    if (result.outcome == CheckOutcome::CannotOpen && result.error == ENOENT && listsAgain) {
        hasGone = true;
        return;
    }
    looked.insert(name);
    if (result.outcome != CheckOutcome::Done)
        return noteClosed(name, result);
    LogSummary summary;
    Watch watch(nullptr);
    result = qvledger::checkLog(handle, *log, watch, summary);
    eraseProgress();
    if (result.outcome == CheckOutcome::GaveUp)
        return;
    if (result.outcome != CheckOutcome::Done) {
        outcome.closed = result.code;
        return writeClosedLogLine(options.serverName, name, LogState::Unreadable,
                                  withReason("cannot be read to its end", result.error).c_str());
    }
    const LogState state = stateOf(summary);
    writeLogLine(options.serverName, name, state, summary);
    if (state != LogState::Cut && state != LogState::Damaged)
        return;
    outcome.damaged = true;
    if (options.saveFolder == nullptr)
        return;
    std::fflush(stdout);
    if (summary.headerIsDamaged)
        DisplayMsg(kMsgCheckNotSaved, name);
    else
        save(*log, name);
}

// Messages that are not the program's would stand in the middle of the line.
static bool outputIsFile() {
    OS_fileIdentity identity = {};
    return OS_IdentifyDescriptor(_fileno(stdout), &identity) == 0 && identity.regular;
}

void CheckRun::checkListed(const Facility &facility) {
    const ALA_name *name = facility.nameList;
    for (const dateNode *node = facility.dateList; node != nullptr && !mustStop(std::ferror(stdout) != 0);
         node = node->next, name = name->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        if (!range.contains(date) || looked.contains(name->logName))
            continue;
        progressToLog(date);
        checkLog(facility.mainh, name->logName);
    }
}

int CheckRun::checkLogs(Facility &facility) {
    const std::int32_t count = countLogs(facility, range);
    startProgress(outputIsFile(), count);
    looked.clear();
    hasGone = false;
    listsAgain = true;
    checkListed(facility);
    if (hasGone) { // as today's log does at midnight, when it is given its date
        listsAgain = false;
        static_cast<void>(ALA_FreeDateList(&facility.dateList)); // they are listed anew in any case
        static_cast<void>(ALA_FreeNameList(&facility.nameList));
        if (const ALA_retCode_t result = listLogs(options, facility); result != ALA_N_NORMAL) {
            endProgress();
            return result;
        }
        checkListed(facility);
    }
    endProgress();
    if (facility.isListCut)
        outcome.closed = ALA_A_FAIL_OPEN_DIR;
    if (count != 0)
        return 0;
    DisplayMsg(kMsgNoLogs);
    return kStatusNoLogs;
}

// ---- The run ----

// The two tables of a server.  0, or why the second one is empty.
int CheckRun::turn() {
    Facility facility;
    std::string logPath;
    OS_RestoreEnvironment(environment); // nothing of another server is left
    int status = checkSetUp(options, logPath);
    if (status == 0)
        status = start(logPath, facility);
    isFolderOfLogs = status == 0 && isSameFolder(logPath.c_str(), options.saveFolder);
    writeLogHeader();
    if (status == 0)
        status = checkLogs(facility);
    if (status != 0 && servers.size() > 1)
        DisplayMsg(kMsgCheckServerFailed, options.serverName, status);
    return status;
}

int CheckRun::run() {
    for (const char *const server : servers) {
        if (mustStop(std::ferror(stdout) != 0))
            break;
        if (server != servers.front())
            std::fputc('\n', stdout);
        options.serverName = server;
        const int status = turn();
        if (status == kStatusNoLogs)
            outcome.noLogs = true;
        else if (outcome.ended == 0)
            outcome.ended = status;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const int error = outputError() != 0 ? outputError() : errno;
        DisplayMsg(kMsgCheckOutputLost, std::strerror(error));
        outcome.lost = true;
    }
    return outcome.status();
}

// Without an option that is unknown, and with a name wherever one is due: without one, the folder to save to
// would be the root of all of them.
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
    std::vector<const char *> servers(options.moreServers, options.moreServers + options.numMoreServers);
    if (options.serverName != nullptr)
        servers.insert(servers.begin(), options.serverName);
    if (!isValid(options, servers)) {
        DisplayMsg(kMsgCheckUsage);
        return kStatusUsage;
    }
    return datesAreValid(options) ? CheckRun(options, servers).run() : kStatusBadStart;
}
