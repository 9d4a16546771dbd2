#include "tool/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/os.h"
#include "service/log/log.h"
#include "service/messages/message.h"
#include "tool/facility.h"
#include "tool/messages.h"
#include "tool/report/line_writer.h"
#include "tool/report/report_file.h"
#include "tool/report/report_writer.h"
#include "tool/rights.h"
#include "tool/turn.h"

using namespace qvledger;

namespace {

// What the servers' turns leave behind.
struct Outcome {
    bool deletedAny = false;
    bool failed = false;
    bool foundLog = false;
    int status = 0;

    // The first failure counts.  That there is no log is less than a failure.
    void add(const TurnEnd &turn) {
        deletedAny = deletedAny || turn.deletedAny;
        failed = failed || turn.failed;
        foundLog = foundLog || turn.foundLog;
        if (status == 0 || (status == kStatusNoLogs && turn.status != 0))
            status = turn.status;
    }
};

// The turns of a run's servers, one after another.
class Run {
public:
    Run(const Options &givenOptions, std::int32_t givenNumServers, LogOutput &givenWriter)
        : options(givenOptions), numServers(givenNumServers), writer(givenWriter) {}

    // All turns: the run's status.
    int report();
    bool isLost() const { return lines.failed(); }

private:
    TurnEnd turn(std::int32_t number);
    int begin(std::int32_t number);
    bool enter(std::int32_t number);
    bool refuseLogAsReport(std::int32_t current);

    Options options; // of the server whose turn it is
    const char *firstServer = options.serverName;
    std::int32_t numServers;
    LogOutput &writer;
    ReportFile file;
    LineWriter lines{file};
    Outcome outcome;
    bool begun = false; // the report is open
    bool over = false;  // no further turn follows
    char **environment = OS_KeepEnvironment();
    // In which the times are.  Not the environment's own text, which need not outlast a change; a longer one
    // counts up to here.
    char zone[256] = "";
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

// True after telling that the report is a log of one of the servers: what went into it would be read as that
// server's records.  No server is registered for it, as the first registration settles the time zone.
bool Run::refuseLogAsReport(std::int32_t current) {
    if (!file.isFile())
        return false;
    for (std::int32_t number = 0; number < numServers; ++number) {
        // Its turn tells if settings are missing; what directory is known then is looked at all the same.
        if (numServers > 1)
            static_cast<void>(enter(number));
        Malloced<char> madePath;
        const char *logPath = findLogPath(options, madePath);
        const LentRights rights(options.acctPath2 == nullptr);
        if (logPath == nullptr || !file.isLog(options.serverName, logPath))
            continue;
        DisplayMsg(kMsgReportFile, file.name());
        return true;
    }
    if (numServers == 1 || enter(current))
        return false;
    DisplayMsg(kMsgEnvironment); // the registry has changed in between
    return true;
}

// What comes once, before the first log: 0, or the status that ends the run.
int Run::begin(std::int32_t number) {
    if (!datesAreValid(options))
        return kStatusBadStart;
    const ReportFile::Opened opened = file.open(options.ofile);
    if (opened == ReportFile::Opened::GivenUp)
        return 0; // the signal ends the program
    if (opened == ReportFile::Opened::No || !lines.begin()) {
        DisplayMsg(kMsgReportFile, file.name());
        return kStatusBadStart;
    }
    std::snprintf(zone, sizeof zone, "%s", timeZone());
    if (refuseLogAsReport(number))
        return kStatusBadStart;
    begun = true;
    return 0;
}

static TurnEnd failedTurn(int status) {
    return {.status = status, .failed = status != 0};
}

TurnEnd Run::turn(std::int32_t number) {
    if (!enter(number)) {
        DisplayMsg(kMsgEnvironment);
        if (const char *trouble = OS_RegistryTrouble(); *trouble != '\0') {
            DisplayMsg(kMsgRegistryFile, trouble);
            over = true; // all servers have their settings there
        }
        return failedTurn(kStatusBadStart);
    }
    if (!begun) {
        const int status = begin(number);
        over = !begun;
        if (over)
            return failedTurn(status);
    }
    if (std::strncmp(timeZone(), zone, sizeof zone - 1) != 0) {
        DisplayMsg(kMsgOtherZone, options.serverName, timeZone(), zone);
        return failedTurn(kStatusBadStart);
    }
    return reportServer(options, lines, writer);
}

int Run::report() {
    for (std::int32_t number = 0; number < numServers && !over; ++number) {
        const TurnEnd end = turn(number);
        outcome.add(end);
        if (end.status != 0 && numServers > 1 && !over) {
            DisplayMsg(kMsgServerFailed, options.serverName, end.status);
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the server %s ended with status %d",
                            options.serverName, end.status);
        }
        over = over || lines.failed() || OS_NotedSignal() != 0;
    }
    static_cast<void>(lines.flush()); // reported where it failed
    if (!outcome.deletedAny && (outcome.failed || !outcome.foundLog))
        if (file.removeIfCreated())
            DisplayMsg(kMsgReportRemoved, options.ofile);
    lines.close();
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
    for (std::int32_t operand = numServers - 1; operand < options.numMoreServers; ++operand)
        if (*options.moreServers[operand] == '-') {
            DisplayMsg(kMsgIgnoredOption, options.moreServers[operand]);
            break;
        }
    needDoc = options.docflg;
    Run run(options, numServers, writer);
    const int status = run.report();
    return run.isLost() && statusIfLost != kStatusAsUsual ? statusIfLost : status;
}

int qvledger::run(const Options &options) {
    ReportWriter writer(options.suppressHeadflg);
    return runWith(options, 1, writer);
}
