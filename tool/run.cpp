#include "tool/run.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include "ala/ala.h"
#include "ala/driver.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/holding.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/report_stream.h"
#include "tool/report_writer.h"
#include "tool/rights.h"
#include "tool/stop.h"

using namespace qvledger;

constexpr std::int32_t kNoUpperBound = 99999999;

namespace {

// What the log loop carries from log to log.
struct LoopState {
    bool noLogFound = true;
    bool deletedAny = false;
    bool errOut = false;
    ALA_retCode_t finalErr = ALA_N_NORMAL; // code of the latest failure

    void fail(ALA_retCode_t code) {
        errOut = true;
        finalErr = code;
    }
};

struct DateRange {
    std::int32_t startDateVal;
    std::int32_t endDateVal;
};

// The registration and the lists of logs.  Released step by step at the normal end, as each step can fail.
struct Facility {
    ALA_handle_t mainh = nullptr;
    dateNode *dateList = nullptr;
    ALA_name *nameList = nullptr;

    Facility() = default;
    ~Facility() {
        ALA_FreeDateList(&dateList);
        ALA_FreeNameList(&nameList);
        if (mainh != nullptr)
            ALA_Unregister(&mainh); // too late for its result to matter
    }
    Facility(const Facility &) = delete;
    Facility &operator=(const Facility &) = delete;
};

} // namespace

static bool loadServiceEnvironment(const char *serverName) {
    const LentRights rights(true);
    char *serviceName = nullptr;
    const bool named = ALA__GetServiceName(serverName, kServerTypeSpooler, &serviceName) == 0;
    const Malloced<char> owner(serviceName);
    return named && ALA__SetEnvironmentVariables(serviceName) == 0;
}

static bool datesAreValid(const Options &options) {
    return (options.startDate == nullptr || ValidDate(options.startDate, kStartDate) == 1) &&
           (options.endDate == nullptr || ValidDate(options.endDate, kEndDate) == 1);
}

static DateRange dateRange(const Options &options) {
    return {options.startDate != nullptr ? std::atoi(options.startDate) : 0,
            options.endDate != nullptr ? std::atoi(options.endDate) : kNoUpperBound};
}

// QV_ROOT directly followed by "/var/acct".  0, or the status that ends the run.
static int makeDefaultLogPath(Malloced<char> &path) {
    const char *root = std::getenv("QV_ROOT");
    if (root == nullptr) {
        if (LOG_StartMessage(LOG_ERROR, __FILE__, __LINE__, 0) != 0) {
            LOG_CondAdd("QV_ROOT environment variable not set\n");
            LOG_EndMessage();
        }
        DisplayMsg(kMsgEnvironment);
        return kStatusNoRoot;
    }
    path.reset(_ALA_AddChar(root, "/var/acct"));
    if (path != nullptr)
        return 0;
    DisplayMsg(kMsgNoMemory);
    return kStatusNoMemory;
}

static ALA_retCode_t registerServer(const Options &options, const char *logPath, ALA_handle_t *mainh) {
    findDomainWithLentRights();
    const LentRights rights(options.oidPath == nullptr);
    return ALA_Register(options.serverName, logPath, options.oidPath, mainh);
}

namespace {

// What the facility asks and tells while it deletes logs.
class Deletion final : public ALA__deletion {
public:
    explicit Deletion(const ReportStream &givenReport) : report(givenReport) {}
    const char *objection() override { return report.whyNotInPlace(); }
    void leftAside(const char *path, const char *why) override { DisplayMsg(kMsgLeftAside, path, why); }

private:
    const ReportStream &report;
};

} // namespace

// Registers and lists the server's logs.  0, or the code that ends the run.
static ALA_retCode_t startFacility(const Options &options, const char *logPath, const ReportStream &report,
                                   Facility &facility) {
    ALA_retCode_t result = registerServer(options, logPath, &facility.mainh);
    if (result != ALA_N_NORMAL) {
        tellFailure(result, nullptr);
        return result;
    }
    if (options.dflg != 0) {
        Deletion deletion(report);
        ALA__PutBackLogs(facility.mainh, deletion);
    }
    const LentRights rights(options.acctPath2 == nullptr);
    result = ALA_ListExistingLogsByDate(facility.mainh, &facility.dateList, &facility.nameList);
    if (result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), options.serverName);
        logFailure(nullptr, result);
        static_cast<void>(ALA_Unregister(&facility.mainh)); // the run has failed anyway
    }
    return result;
}

// A report that went into a log would be read as its records.
static bool refuseLogAsReport(const Options &options, const Facility &facility, const ReportStream &report) {
    const LentRights rights(options.acctPath2 == nullptr);
    if (!report.isLogOf(facility.mainh))
        return false;
    DisplayMsg(kMsgReportFile, options.ofile != nullptr ? options.ofile : kStandardOutput);
    return true;
}

static void logKept(std::int32_t date, const char *why) {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the log for the date %d is not deleted: %s", date, why);
}

// Deletes a log that was read.
static void deleteLog(ALA_handle_t mainh, const ALA_time &date, const ALA__readLog &read,
                      const ReportStream &report, LoopState &state) {
    Deletion deletion(report);
    std::int32_t kept = 0;
    const ALA_retCode_t result = ALA__DeleteRead(mainh, &date, read, deletion, &kept);
    if (result == ALA_A_TRY_TO_DELETE_CUR_DAY_LOG || kept != 0)
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
    return ALA__OpenToDelete(mainh, &date, holdFile, logh);
}

// Reports one log, and deletes it under -d.
static void processLog(const Options &options, ALA_handle_t mainh, const ALA_time &givenDate, LogName name,
                       ReportStream &report, LogOutput &writer, LoopState &state) {
    const std::int32_t date = name.date;
    ALA_acctLogHandle_t logh = nullptr;
    if (const ALA_retCode_t result = openLog(options, mainh, givenDate, &logh); result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), date);
        logFailure(nullptr, result);
        writer.passOver(name, report.stream());
        return state.fail(result);
    }
    if (logh == nullptr)
        return; // asked to end while another run had it
    name.file = ALA__LogFileName(logh);
    const bool complete = writer.write(mainh, logh, name, report.stream());
    ALA__readLog read;
    const char *why = complete ? nullptr : "not all of it is in the report";
    if (options.dflg != 0 && why == nullptr)
        why = ALA__KeepRead(logh, read);
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
    deleteLog(mainh, givenDate, read, report, state);
}

static std::int32_t countLogs(const dateNode *dates, const DateRange &range) {
    std::int32_t count = 0;
    for (const dateNode *node = dates; node != nullptr; node = node->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        count += date >= range.startDateVal && date <= range.endDateVal ? 1 : 0;
    }
    return count;
}

static void processLogs(const Options &options, const Facility &facility, ReportStream &report,
                        LogOutput &writer, LoopState &state) {
    const DateRange range = dateRange(options);
    startProgress(report.isFile(), countLogs(facility.dateList, range));
    const ALA_name *file = facility.nameList; // one a date
    for (const dateNode *node = facility.dateList; node != nullptr; node = node->next, file = file->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        if (date > range.endDateVal) // the later ones are newer
            return;
        if (report.failed() || mustStop(report.stream()))
            return;
        if (date < range.startDateVal)
            continue;
        progressToLog(date);
        processLog(options, facility.mainh, node->date, {options.serverName, file->logName, date}, report,
                   writer, state);
    }
}

// Gives back what the run holds.  0, or the code of the step that failed, which ends it.
static ALA_retCode_t releaseFacility(Facility &facility) {
    ALA_retCode_t result = ALA_FreeDateList(&facility.dateList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeDateList error: ", result);
        return result;
    }
    result = ALA_FreeNameList(&facility.nameList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeNameList error: ", result);
        return result;
    }
    result = ALA_Unregister(&facility.mainh);
    if (result != ALA_N_NORMAL)
        logFailure("ALA_Unregister error: ", result);
    return result;
}

// All that comes before the first log.  0, or the status that ends the run.
static int prepare(const Options &options, const ReportStream &report, Facility &facility) {
    Malloced<char> defaultPath;
    if (options.acctPath2 == nullptr)
        if (const int status = makeDefaultLogPath(defaultPath); status != 0)
            return status;
    const char *logPath = options.acctPath2 != nullptr ? options.acctPath2 : defaultPath.get();
    if (const ALA_retCode_t result = startFacility(options, logPath, report, facility);
        result != ALA_N_NORMAL)
        return result;
    return refuseLogAsReport(options, facility, report) ? kStatusBadStart : 0;
}

namespace {

// What the servers' turns leave behind.
struct Outcome {
    bool deletedAny = false; // the lines of deleted logs exist nowhere else
    bool failed = false;
    bool foundLog = false;
    int status = 0;

    // The first failure counts.  That there is no log is less than a failure.
    void add(int serverStatus) {
        failed = failed || (serverStatus != 0 && serverStatus != kStatusNoLogs);
        if (status == 0 || (status == kStatusNoLogs && serverStatus != 0))
            status = serverStatus;
    }
};

} // namespace

// A server's turn behind its checks, up to its status.
static int reportLogs(const Options &options, ReportStream &report, LogOutput &writer, Outcome &outcome) {
    Facility facility;
    LoopState state;
    if (const int status = prepare(options, report, facility); status != 0)
        return status;
    processLogs(options, facility, report, writer, state);
    writer.end();
    endProgress();
    static_cast<void>(report.flush()); // told where it failed
    const bool askedToEnd = OS_NotedSignal() != 0;
    outcome.deletedAny = outcome.deletedAny || state.deletedAny;
    outcome.foundLog = outcome.foundLog || !state.noLogFound;
    outcome.failed = outcome.failed || state.errOut || askedToEnd;
    if (const ALA_retCode_t result = releaseFacility(facility); result != ALA_N_NORMAL)
        return result;
    if (state.noLogFound && !state.errOut && !askedToEnd && !report.failed()) {
        DisplayMsg(kMsgNoLogs);
        return kStatusNoLogs;
    }
    return state.errOut ? state.finalErr : 0;
}

namespace {

// The turns of a run's servers, one after another.
class Run {
public:
    Run(const Options &givenOptions, std::int32_t givenNumServers, LogOutput &givenWriter)
        : options(givenOptions), numServers(givenNumServers), writer(givenWriter) {}

    // All turns: the run's status.
    int report();
    bool isLost() const { return stream.failed(); }

private:
    int turn(std::int32_t number);
    int begin(std::int32_t number);
    bool enter(std::int32_t number);
    bool refuseLogOfLaterServer(std::int32_t number);

    Options options; // of the server whose turn it is
    const char *firstServer = options.serverName;
    std::int32_t numServers;
    LogOutput &writer;
    ReportStream stream;
    Outcome outcome;
    bool begun = false; // the report is open
    bool over = false;  // no further turn follows
    char **environment = OS_KeepEnvironment();
    const char *zone = ""; // in which the times are
};

} // namespace

static const char *timeZone() {
    const char *zone = std::getenv("TZ");
    return zone != nullptr ? zone : "";
}

// Takes up the server's settings, and leaves none of another server's.
bool Run::enter(std::int32_t number) {
    options.serverName = number == 0 ? firstServer : options.moreServers[number - 1];
    OS_RestoreEnvironment(environment);
    return loadServiceEnvironment(options.serverName);
}

// What is written for one server must not go into a log of the next.
bool Run::refuseLogOfLaterServer(std::int32_t number) {
    if (number + 1 == numServers || !stream.isFile())
        return false;
    for (std::int32_t later = number + 1; later < numServers; ++later) {
        if (!enter(later))
            continue; // which its turn will tell
        const char *root = std::getenv("QV_ROOT");
        Malloced<char> defaultPath;
        if (options.acctPath2 == nullptr && root != nullptr)
            defaultPath.reset(_ALA_AddChar(root, "/var/acct"));
        const char *logPath = options.acctPath2 != nullptr ? options.acctPath2 : defaultPath.get();
        Facility facility;
        if (logPath != nullptr && registerServer(options, logPath, &facility.mainh) == ALA_N_NORMAL &&
            refuseLogAsReport(options, facility, stream))
            return true;
    }
    return !enter(number);
}

// What comes once, before the first log: 0, or the status that ends the run.
int Run::begin(std::int32_t number) {
    if (!datesAreValid(options))
        return kStatusBadStart;
    switch (stream.open(options.ofile)) {
    case ReportStream::Opened::No:
        DisplayMsg(kMsgReportFile, options.ofile);
        return kStatusBadStart;
    case ReportStream::Opened::GivenUp:
        return 0; // the signal ends the program
    case ReportStream::Opened::Yes:
        break;
    }
    zone = timeZone();
    if (refuseLogOfLaterServer(number))
        return kStatusBadStart;
    begun = true;
    return 0;
}

// A server's turn: its status.
int Run::turn(std::int32_t number) {
    if (!enter(number)) {
        DisplayMsg(kMsgEnvironment);
        return kStatusBadStart;
    }
    if (!begun) {
        const int status = begin(number);
        over = !begun;
        if (over)
            return status;
    }
    if (std::strcmp(timeZone(), zone) != 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                        "the server %s has the time zone %s, and the run has %s", options.serverName,
                        timeZone(), zone);
        DisplayMsg(kMsgEnvironment);
        return kStatusBadStart;
    }
    return reportLogs(options, stream, writer, outcome);
}

int Run::report() {
    for (std::int32_t number = 0; number < numServers && !over; ++number) {
        const int status = turn(number);
        outcome.add(status);
        if (status != 0 && numServers > 1 && !over)
            DisplayMsg(kMsgServerFailed, options.serverName, status);
        over = over || stream.failed() || OS_NotedSignal() != 0;
    }
    stream.finish();
    if (!outcome.deletedAny && (outcome.failed || !outcome.foundLog))
        stream.removeIfCreated();
    stream.close();
    return outcome.status;
}

int qvledger::runWith(const Options &options, std::int32_t numServers, LogOutput &writer, int statusIfLost) {
    if (options.helpflg != 0) {
        DisplayMsg(kMsgUsage);
        return 0;
    }
    if (options.verflg != 0) {
        MSG_fprintf(stdout, "%s\n", compiledVersionString);
        return 0;
    }
    if (options.errflg != 0 || options.serverName == nullptr) {
        DisplayMsg(kMsgUsage);
        return kStatusUsage;
    }
    needDoc = options.docflg;
    Run run(options, numServers, writer);
    const int status = run.report();
    return run.isLost() && statusIfLost != kStatusAsUsual ? statusIfLost : status;
}

int qvledger::run(const Options &in_options) {
    ReportWriter writer(in_options.suppressHeadflg);
    return runWith(in_options, 1, writer);
}
