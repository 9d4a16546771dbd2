#include "tool/run.h"

#include <cstdlib>
#include <limits>
#include <memory>

#include "ala/ala.h"
#include "ala/base/concatenate.h"
#include "ala/base/owners.h"
#include "ala/directory/directory.h"
#include "ala/driver.h"
#include "ala/registration/environment.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/holding.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/report_stream.h"
#include "tool/report_writer.h"
#include "tool/rights.h"
#include "tool/stop.h"

constexpr std::int32_t kNoUpperBound = 99999999;

namespace {

// What the log loop carries from log to log.
struct LoopState {
    bool noLogFound = true;
    bool deletedAny = false;
    bool errOut = false;
    ALA_retCode_t finalErr = ALA_N_NORMAL; // code of the latest failure

    void fail(ALA_retCode_t in_code) {
        errOut = true;
        finalErr = in_code;
    }
};

class ReportWriter final : public LogWriter {
public:
    explicit ReportWriter(std::int32_t in_suppressHeadflg) : suppressHeadflg(in_suppressHeadflg) {}
    ~ReportWriter() override { freeNames(); }
    ReportWriter(const ReportWriter &) = delete;
    ReportWriter &operator=(const ReportWriter &) = delete;

    bool write(ALA_handle_t in_handle, ALA_acctLogHandle_t in_log, std::int32_t,
               std::FILE *inp_stream) override {
        std::int32_t doHeader = suppressHeadflg != 0 ? 0 : 1;
        return doLog(in_handle, &in_log, &doHeader, inp_stream, suppressHeadflg, &prevLog);
    }
    void end() override { freeNames(); }

private:
    void freeNames() {
        if (prevLog != nullptr)
            ALA_FreeAttributeList(&prevLog);
    }

    std::int32_t suppressHeadflg;
    ALA_attrName *prevLog = nullptr; // names of the record written last
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

static bool loadServiceEnvironment(const char *inp_serverName) {
    const LentRights rights(true);
    Malloced<char> serviceName;
    if (ALA__GetServiceName(inp_serverName, kServerTypeSpooler, TextOut(serviceName)) != 0)
        return false;
    return ALA__SetEnvironmentVariables(serviceName.get()) == 0;
}

static bool datesAreValid(const Options &in_options) {
    return (in_options.startDate == nullptr || ValidDate(in_options.startDate, kStartDate) == 1) &&
           (in_options.endDate == nullptr || ValidDate(in_options.endDate, kEndDate) == 1);
}

static DateRange dateRange(const Options &in_options) {
    return {in_options.startDate != nullptr ? std::atoi(in_options.startDate) : 0,
            in_options.endDate != nullptr ? std::atoi(in_options.endDate) : kNoUpperBound};
}

// QV_ROOT directly followed by "/var/acct".  0, or the status that ends the run.
static int makeDefaultLogPath(Malloced<char> &outp_path) {
    const char *root = std::getenv("QV_ROOT");
    if (root == nullptr) {
        if (LOG_StartMessage(LOG_ERROR, __FILE__, __LINE__, 0) != 0) {
            LOG_CondAdd("QV_ROOT environment variable not set\n");
            LOG_EndMessage();
        }
        DisplayMsg(kMsgEnvironment);
        return kStatusNoRoot;
    }
    outp_path.reset(_ALA_AddChar(root, "/var/acct"));
    if (outp_path != nullptr)
        return 0;
    DisplayMsg(kMsgNoMemory);
    return kStatusNoMemory;
}

static ALA_retCode_t registerServer(const Options &in_options, const char *inp_logPath,
                                    ALA_handle_t *outp_mainh) {
    findDomainWithLentRights();
    const LentRights rights(in_options.oidPath == nullptr);
    return ALA_Register(in_options.serverName, inp_logPath, in_options.oidPath, outp_mainh);
}

namespace {

// What the facility asks and tells while it deletes logs.
class Deletion final : public ALA__deletion {
public:
    explicit Deletion(const ReportStream &in_report) : report(in_report) {}
    const char *objection() override { return report.whyNotInPlace(); }
    void leftAside(const char *inp_path, const char *in_why) override {
        DisplayMsg(kMsgLeftAside, inp_path, in_why);
    }

private:
    const ReportStream &report;
};

} // namespace

// Registers and lists the server's logs.  0, or the code that ends the run.
static ALA_retCode_t startFacility(const Options &in_options, const char *inp_logPath,
                                   const ReportStream &in_report, Facility &outp_facility) {
    ALA_retCode_t result = registerServer(in_options, inp_logPath, &outp_facility.mainh);
    if (result != ALA_N_NORMAL) {
        tellFailure(result, nullptr);
        return result;
    }
    if (in_options.dflg != 0) {
        Deletion deletion(in_report);
        ALA__PutBackLogs(outp_facility.mainh, deletion);
    }
    const LentRights rights(in_options.acctPath2 == nullptr);
    result =
        ALA_ListExistingLogsByDate(outp_facility.mainh, &outp_facility.dateList, &outp_facility.nameList);
    if (result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), in_options.serverName);
        logFailure(nullptr, result);
        static_cast<void>(ALA_Unregister(&outp_facility.mainh)); // the run has failed anyway
    }
    return result;
}

// A report that went into a log would be read as its records.
static bool refuseLogAsReport(const Options &in_options, const Facility &in_facility,
                              const ReportStream &in_report) {
    const LentRights rights(in_options.acctPath2 == nullptr);
    if (!in_report.isLogOf(in_facility.mainh))
        return false;
    DisplayMsg(kMsgReportFile, in_options.ofile != nullptr ? in_options.ofile : kStandardOutput);
    return true;
}

static void logKept(std::int32_t in_date, const char *in_why) {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the log for the date %d is not deleted: %s", in_date,
                    in_why);
}

// Deletes a log that was read.
static void deleteLog(ALA_handle_t mainh, const ALA_time &in_date, const ALA__readLog &in_read,
                      const ReportStream &in_report, LoopState &inoutp_state) {
    Deletion deletion(in_report);
    std::int32_t kept = 0;
    const ALA_retCode_t result = ALA__DeleteRead(mainh, &in_date, in_read, deletion, &kept);
    if (result == ALA_A_TRY_TO_DELETE_CUR_DAY_LOG || kept != 0)
        return;
    if (result == ALA_N_NORMAL) {
        inoutp_state.deletedAny = true;
        return;
    }
    DisplayMsgFromErr(static_cast<std::uint32_t>(result), ALA__NumFromDate(&in_date));
    logFailure(nullptr, result);
    inoutp_state.fail(result);
}

static ALA_retCode_t openLog(const Options &in_options, ALA_handle_t mainh, const ALA_time &in_date,
                             ALA_acctLogHandle_t *outp_logh) {
    const LentRights rights(in_options.acctPath2 == nullptr);
    if (in_options.dflg == 0)
        return ALA_Open(mainh, &in_date, outp_logh);
    return ALA__OpenToDelete(mainh, &in_date, holdFile, outp_logh);
}

// Reports one log, and deletes it under -d.
static void processLog(const Options &in_options, ALA_handle_t mainh, const ALA_time &in_date,
                       ReportStream &inoutp_report, LogWriter &inoutp_writer, LoopState &inoutp_state) {
    const std::int32_t date = ALA__NumFromDate(&in_date);
    ALA_acctLogHandle_t logh = nullptr;
    if (const ALA_retCode_t result = openLog(in_options, mainh, in_date, &logh); result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), date);
        logFailure(nullptr, result);
        return inoutp_state.fail(result);
    }
    if (logh == nullptr)
        return; // asked to end while another run had it
    const bool complete = inoutp_writer.write(mainh, logh, date, inoutp_report.stream());
    ALA__readLog read;
    const char *why = complete ? nullptr : "not all of it is in the report";
    if (in_options.dflg != 0 && why == nullptr)
        why = ALA__KeepRead(logh, read);
    const ALA_retCode_t closed = ALA_Close(mainh, &logh);
    inoutp_state.noLogFound = false;
    if (closed != ALA_N_NORMAL) {
        DisplayMsg(kMsgCloseFailed, date);
        logFailure(nullptr, closed);
        inoutp_state.fail(closed);
    }
    if (in_options.dflg == 0)
        return;
    if (why == nullptr)
        why = inoutp_report.whyNotSafe();
    if (why != nullptr)
        return logKept(date, why);
    deleteLog(mainh, in_date, read, inoutp_report, inoutp_state);
}

static std::int32_t countLogs(const dateNode *inp_dates, const DateRange &in_range) {
    std::int32_t count = 0;
    for (const dateNode *node = inp_dates; node != nullptr; node = node->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        count += date >= in_range.startDateVal && date <= in_range.endDateVal ? 1 : 0;
    }
    return count;
}

static void processLogs(const Options &in_options, const Facility &in_facility, ReportStream &inoutp_report,
                        LogWriter &inoutp_writer, LoopState &inoutp_state) {
    const DateRange range = dateRange(in_options);
    startProgress(inoutp_report.isTerminal(), countLogs(in_facility.dateList, range));
    for (const dateNode *node = in_facility.dateList; node != nullptr; node = node->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        if (date > range.endDateVal) // the later ones are newer
            return;
        if (inoutp_report.failed() || mustStop(inoutp_report.stream()))
            return;
        if (date < range.startDateVal)
            continue;
        progressToLog(date);
        processLog(in_options, in_facility.mainh, node->date, inoutp_report, inoutp_writer, inoutp_state);
    }
}

// Gives back what the run holds.  0, or the code of the step that failed, which ends it.
static ALA_retCode_t releaseFacility(Facility &inoutp_facility) {
    ALA_retCode_t result = ALA_FreeDateList(&inoutp_facility.dateList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeDateList error: ", result);
        return result;
    }
    result = ALA_FreeNameList(&inoutp_facility.nameList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeNameList error: ", result);
        return result;
    }
    result = ALA_Unregister(&inoutp_facility.mainh);
    if (result != ALA_N_NORMAL)
        logFailure("ALA_Unregister error: ", result);
    return result;
}

// All that comes before the first log.  0, or the status that ends the run.
static int prepare(const Options &in_options, const ReportStream &in_report, Facility &outp_facility) {
    Malloced<char> defaultPath;
    if (in_options.acctPath2 == nullptr)
        if (const int status = makeDefaultLogPath(defaultPath); status != 0)
            return status;
    const char *logPath = in_options.acctPath2 != nullptr ? in_options.acctPath2 : defaultPath.get();
    if (const ALA_retCode_t result = startFacility(in_options, logPath, in_report, outp_facility);
        result != ALA_N_NORMAL)
        return result;
    return refuseLogAsReport(in_options, outp_facility, in_report) ? kStatusBadStart : 0;
}

// The run behind its checks, up to its status.
static int reportLogs(const Options &in_options, ReportStream &inoutp_report, LogWriter &inoutp_writer) {
    Facility facility;
    LoopState state;
    const auto removeReport = [&] {
        if (!state.deletedAny) // the lines of deleted logs exist nowhere else
            inoutp_report.removeIfCreated();
    };
    if (const int status = prepare(in_options, inoutp_report, facility); status != 0) {
        inoutp_report.finish();
        removeReport();
        return status;
    }
    processLogs(in_options, facility, inoutp_report, inoutp_writer, state);
    inoutp_writer.end();
    endProgress();
    inoutp_report.finish();
    const bool askedToEnd = OS_NotedSignal() != 0;
    if (state.errOut || askedToEnd)
        removeReport();
    if (const ALA_retCode_t result = releaseFacility(facility); result != ALA_N_NORMAL)
        return result;
    if (state.noLogFound && !state.errOut && !askedToEnd && !inoutp_report.failed()) {
        DisplayMsg(kMsgNoLogs);
        removeReport();
        return kStatusNoLogs;
    }
    return state.errOut ? state.finalErr : 0;
}

int runWith(const Options &in_options, LogWriter &inoutp_writer, int in_statusIfLost) {
    if (in_options.helpflg != 0) {
        DisplayMsg(kMsgUsage);
        return 0;
    }
    if (in_options.verflg != 0) {
        MSG_fprintf(stdout, "%s\n", compiledVersionString);
        return 0;
    }
    if (in_options.errflg != 0 || in_options.serverName == nullptr) {
        DisplayMsg(kMsgUsage);
        return kStatusUsage;
    }
    needDoc = in_options.docflg;
    if (!loadServiceEnvironment(in_options.serverName)) {
        DisplayMsg(kMsgEnvironment);
        return kStatusBadStart;
    }
    if (!datesAreValid(in_options))
        return kStatusBadStart;
    ReportStream report;
    switch (report.open(in_options.ofile)) {
    case ReportStream::Opened::No:
        DisplayMsg(kMsgReportFile, in_options.ofile);
        return kStatusBadStart;
    case ReportStream::Opened::GivenUp:
        return 0; // the signal ends the program
    case ReportStream::Opened::Yes:
        break;
    }
    const int status = reportLogs(in_options, report, inoutp_writer);
    report.close();
    return report.failed() && in_statusIfLost != kStatusAsUsual ? in_statusIfLost : status;
}

int run(const Options &in_options) {
    ReportWriter writer(in_options.suppressHeadflg);
    return runWith(in_options, writer);
}
