#include "tool/run.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/os.h"
#include "service/log/log.h"
#include "service/messages/message.h"
#include "tool/messages.h"
#include "tool/program.h"
#include "tool/report/line_writer.h"
#include "tool/report/report_file.h"
#include "tool/report/report_writer.h"
#include "tool/rights.h"
#include "tool/server_report.h"
#include "tool/server_session.h"

using namespace qvledger;

namespace {

// The combined results of the servers.
struct RunResult {
    bool deletedAny = false;
    bool failed = false;
    bool foundLog = false;
    int status = 0;

    // Adds a server's result.  The run's status is that of the first failure.  A failure takes precedence
    // over kStatusNoLogs.
    void add(const ServerResult &server) {
        deletedAny = deletedAny || server.deletedAny;
        failed = failed || server.failed;
        foundLog = foundLog || server.foundLog;
        if (status == 0 || (status == kStatusNoLogs && server.status != 0))
            status = server.status;
    }
};

// Reports the servers of a run, one after another, into one report.
class Run {
public:
    Run(const Options &options, std::int32_t numServers, LogOutput &writer)
        : options_(options), numServers_(numServers), writer_(writer) {}

    // Reports all servers.  Returns the run's exit status.
    int report();
    // Could the report not be written?
    bool isLost() const { return lines_.failed(); }

private:
    ServerResult reportOne(std::int32_t number);
    int openReport(std::int32_t number);
    bool loadSettings(std::int32_t number);
    bool refuseLogAsReport(std::int32_t current);

    Options options_; // serverName is the current server
    const char *firstServer_ = options_.serverName;
    std::int32_t numServers_;
    LogOutput &writer_;
    ReportFile file_;
    LineWriter lines_{file_};
    RunResult result_;
    bool isOpen_ = false; // openReport() succeeded
    bool isOver_ = false; // the remaining servers are skipped
    char **environment_ = OS_KeepEnvironment();
    char zone_[256] = ""; // TZ that all servers must share; a copy, cut to 255 bytes
};

} // namespace

static const char *timeZone() {
    const char *zone = std::getenv("TZ");
    return zone != nullptr ? zone : "";
}

// Sets the environment for a server, and removes settings of the previous server.
bool Run::loadSettings(std::int32_t number) {
    options_.serverName = number == 0 ? firstServer_ : options_.moreServers[number - 1];
    OS_RestoreEnvironment(environment_);
    return loadServiceEnvironment(options_.serverName);
}

// Prints a message and returns true if the report file is a log in a server's log directory, because report
// lines in a log would be read as records; also if the current server's settings can no longer be loaded.
// Registers no server, because the first registration fixes the time zone.
bool Run::refuseLogAsReport(std::int32_t current) {
    if (!file_.isFile())
        return false;
    for (std::int32_t number = 0; number < numServers_; ++number) {
        // Ignore missing settings here: they are reported when this server's report begins.  The log
        // directory may still be known from -p or QV_ROOT.
        if (numServers_ > 1)
            static_cast<void>(loadSettings(number));
        Malloced<char> madePath;
        const char *logPath = findLogPath(options_, madePath);
        const LentRights rights(options_.acctPath2 == nullptr);
        if (logPath == nullptr || !file_.isLog(options_.serverName, logPath))
            continue;
        DisplayMsg(kMsgReportFile, file_.name());
        return true;
    }
    if (numServers_ == 1 || loadSettings(current))
        return false;
    DisplayMsg(kMsgEnvironment);
    return true;
}

// Checks the dates and opens the report.  Called once, before the first log.  Returns 0, or the status that
// ends the run.  If a signal ended the opening, returns 0 and leaves isOpen_ false.
int Run::openReport(std::int32_t number) {
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
    isOpen_ = true;
    return 0;
}

static ServerResult failedServer(int status) {
    return {.status = status, .failed = status != 0};
}

ServerResult Run::reportOne(std::int32_t number) {
    if (!loadSettings(number)) {
        DisplayMsg(kMsgEnvironment);
        if (const char *trouble = OS_RegistryTrouble(); *trouble != '\0') {
            DisplayMsg(kMsgRegistryFile, trouble);
            isOver_ = true; // other servers need the same registry file
        }
        return failedServer(kStatusBadStart);
    }
    if (!isOpen_) {
        const int status = openReport(number);
        isOver_ = !isOpen_;
        if (isOver_)
            return failedServer(status);
    }
    if (std::strncmp(timeZone(), zone_, sizeof zone_ - 1) != 0) {
        DisplayMsg(kMsgOtherZone, options_.serverName, timeZone(), zone_);
        return failedServer(kStatusBadStart);
    }
    return reportServer(options_, lines_, writer_);
}

int Run::report() {
    for (std::int32_t number = 0; number < numServers_ && !isOver_; ++number) {
        const ServerResult server = reportOne(number);
        result_.add(server);
        if (server.status != 0 && numServers_ > 1 && !isOver_) {
            DisplayMsg(kMsgServerFailed, options_.serverName, server.status);
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the server %s ended with status %d",
                            options_.serverName, server.status);
        }
        isOver_ = isOver_ || lines_.failed() || OS_NotedSignal() != 0;
    }
    if (isOpen_ && OS_NotedSignal() == 0)
        writer_.endRun(lines_);
    static_cast<void>(lines_.flush()); // flush() reports a failure
    if (!result_.deletedAny && !writer_.keepsReport() && (result_.failed || !result_.foundLog))
        if (file_.removeIfCreated())
            DisplayMsg(kMsgReportRemoved, options_.ofile);
    lines_.close();
    return result_.status;
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
    checkSystem();
    needDoc = options.docflg;
    Run run(options, numServers, writer);
    const int status = run.report();
    return run.isLost() && statusIfLost != kStatusAsUsual ? statusIfLost : status;
}

int qvledger::run(const Options &options) {
    ReportWriter writer(options.suppressHeadflg);
    return runWith(options, 1, writer);
}
