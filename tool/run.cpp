#include "tool/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/os.h"
#include "service/log/log.h"
#include "service/messages/message.h"
#include "tool/messages.h"
#include "tool/report/line_writer.h"
#include "tool/report/report_file.h"
#include "tool/report/report_writer.h"
#include "tool/rights.h"
#include "tool/server_report.h"
#include "tool/server_session.h"

using namespace qvledger;

namespace {

// What the servers' turns leave behind.
struct Outcome {
    bool deletedAny = false;
    bool failed = false;
    bool foundLog = false;
    int status = 0;

    // The first failure counts.  That there is no log is less than a failure.
    void add(const ServerResult &server) {
        deletedAny = deletedAny || server.deletedAny;
        failed = failed || server.failed;
        foundLog = foundLog || server.foundLog;
        if (status == 0 || (status == kStatusNoLogs && server.status != 0))
            status = server.status;
    }
};

// The turns of a run's servers, one after another.
class Run {
public:
    Run(const Options &options, std::int32_t numServers, LogOutput &writer)
        : options_(options), numServers_(numServers), writer_(writer) {}

    // All turns: the run's status.
    int report();
    bool isLost() const { return lines_.failed(); }

private:
    ServerResult reportOne(std::int32_t number);
    int begin(std::int32_t number);
    bool enter(std::int32_t number);
    bool refuseLogAsReport(std::int32_t current);

    Options options_; // of the server whose turn it is
    const char *firstServer_ = options_.serverName;
    std::int32_t numServers_;
    LogOutput &writer_;
    ReportFile file_;
    LineWriter lines_{file_};
    Outcome outcome_;
    bool begun_ = false; // the report is open
    bool over_ = false;  // no further turn follows
    char **environment_ = OS_KeepEnvironment();
    // In which the times are.  Not the environment's own text, which need not outlast a change; a longer one
    // counts up to here.
    char zone_[256] = "";
};

} // namespace

static const char *timeZone() {
    const char *zone = std::getenv("TZ");
    return zone != nullptr ? zone : "";
}

// Takes up the server's settings, and leaves none of another server's.
bool Run::enter(std::int32_t number) {
    options_.serverName = number == 0 ? firstServer_ : options_.moreServers[number - 1];
    OS_RestoreEnvironment(environment_);
    return loadServiceEnvironment(options_.serverName);
}

// True after telling that the report is a log of one of the servers: what went into it would be read as that
// server's records.  No server is registered for it, as the first registration settles the time zone.
bool Run::refuseLogAsReport(std::int32_t current) {
    if (!file_.isFile())
        return false;
    for (std::int32_t number = 0; number < numServers_; ++number) {
        // Its turn tells if settings are missing; what directory is known then is looked at all the same.
        if (numServers_ > 1)
            static_cast<void>(enter(number));
        Malloced<char> madePath;
        const char *logPath = findLogPath(options_, madePath);
        const LentRights rights(options_.acctPath2 == nullptr);
        if (logPath == nullptr || !file_.isLog(options_.serverName, logPath))
            continue;
        DisplayMsg(kMsgReportFile, file_.name());
        return true;
    }
    if (numServers_ == 1 || enter(current))
        return false;
    DisplayMsg(kMsgEnvironment); // the registry has changed in between
    return true;
}

// What comes once, before the first log: 0, or the status that ends the run.
int Run::begin(std::int32_t number) {
    if (!datesAreValid(options_))
        return kStatusBadStart;
    const ReportFile::Opened opened = file_.open(options_.ofile);
    if (opened == ReportFile::Opened::GivenUp)
        return 0; // the signal ends the program
    if (opened == ReportFile::Opened::No || !lines_.begin()) {
        DisplayMsg(kMsgReportFile, file_.name());
        return kStatusBadStart;
    }
    std::snprintf(zone_, sizeof zone_, "%s", timeZone());
    if (refuseLogAsReport(number))
        return kStatusBadStart;
    begun_ = true;
    return 0;
}

static ServerResult failedTurn(int status) {
    return {.status = status, .failed = status != 0};
}

ServerResult Run::reportOne(std::int32_t number) {
    if (!enter(number)) {
        DisplayMsg(kMsgEnvironment);
        if (const char *trouble = OS_RegistryTrouble(); *trouble != '\0') {
            DisplayMsg(kMsgRegistryFile, trouble);
            over_ = true; // all servers have their settings there
        }
        return failedTurn(kStatusBadStart);
    }
    if (!begun_) {
        const int status = begin(number);
        over_ = !begun_;
        if (over_)
            return failedTurn(status);
    }
    if (std::strncmp(timeZone(), zone_, sizeof zone_ - 1) != 0) {
        DisplayMsg(kMsgOtherZone, options_.serverName, timeZone(), zone_);
        return failedTurn(kStatusBadStart);
    }
    return reportServer(options_, lines_, writer_);
}

int Run::report() {
    for (std::int32_t number = 0; number < numServers_ && !over_; ++number) {
        const ServerResult end = reportOne(number);
        outcome_.add(end);
        if (end.status != 0 && numServers_ > 1 && !over_) {
            DisplayMsg(kMsgServerFailed, options_.serverName, end.status);
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the server %s ended with status %d",
                            options_.serverName, end.status);
        }
        over_ = over_ || lines_.failed() || OS_NotedSignal() != 0;
    }
    static_cast<void>(lines_.flush()); // reported where it failed
    if (!outcome_.deletedAny && (outcome_.failed || !outcome_.foundLog))
        if (file_.removeIfCreated())
            DisplayMsg(kMsgReportRemoved, options_.ofile);
    lines_.close();
    return outcome_.status;
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
