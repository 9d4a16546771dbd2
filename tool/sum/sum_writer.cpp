#include "tool/sum/sum_writer.h"

#include <algorithm>

#include "ala/driver/session.h"
#include "platform/os.h"
#include "tool/exit_status.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/stop.h"

using namespace qvledger;

void SumWriter::fail(ALA_retCode_t code) {
    if (failure_ == ALA_N_NORMAL)
        failure_ = code;
}

void SumWriter::addMissing(const std::string &reason) {
    page_.missing.push_back({server_, file_, date_, date_, reason});
}

void SumWriter::beginLog(const LogName &name) {
    server_ = name.server;
    file_ = name.file;
    date_ = name.date;
    seen_.insert(server_);
    gaps_.date(server_, date_, page_.missing);
    page_.first = page_.first == 0 ? date_ : std::min(page_.first, date_);
    page_.last = std::max(page_.last, date_);
    records_ = 0;
    unreadable_ = 0;
}

void SumWriter::addJob() {
    auto group = groups_.find(std::string_view(reader_.key()));
    if (group == groups_.end())
        group = groups_.try_emplace(reader_.key()).first;
    group->second.addJob(reader_.amounts(), reader_.completion());
}

// Adds the jobs of a log to the sums.  Returns the code that ended the log, ALA_A_LAST_ATTRIBUTE for a log
// without records, or ALA_N_NORMAL if mustStop().
ALA_retCode_t SumWriter::sumJobs(ALA_handle_t handle, ALA_acctLogHandle_t log, const LineWriter &report) {
    ALA_record_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstJobRecord(handle, &log, &read);
    AlaOwned<record> current(read);
    while (result == ALA_N_NORMAL) {
        if (const ALA_retCode_t code = reader_.read(handle, current.get()); code != ALA_N_NORMAL) {
            reportFailure(code, "unable to read record: ");
            fail(code);
            ++unreadable_;
        }
        addJob();
        ++records_;
        countRecord();
        if (mustStop(report.failed()))
            return ALA_N_NORMAL;
        result = ALA_GetNextJobRecord(handle, &log, &read);
        current.reset(read);
    }
    return hasNoRecord(log) ? ALA_A_LAST_ATTRIBUTE : result;
}

bool SumWriter::write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name, LineWriter &report) {
    if (opened_.isRepeated(name)) {
        page_.missing.push_back(
            {name.server, opened_.unread(), name.date, name.date, "another log was read for this date"});
        fail(ALA_A_FAIL_TO_OPEN_LOG_FILE);
        return false;
    }
    beginLog(name);
    reader_.beginLog(server_, date_);
    const ALA_retCode_t ended = sumJobs(handle, log, report);
    if (unreadable_ != 0)
        addMissing("damaged records, not counted in full: " + std::to_string(unreadable_));
    for (const auto &[attribute, count] : reader_.faults())
        addMissing("unusable values of " + std::string(attribute) + ": " + std::to_string(count));
    if (ended != ALA_N_NORMAL && ended != ALA_A_LAST_ATTRIBUTE) {
        reportFailure(ended, "qvledger-sum internal error: ");
        addMissing("cannot be read after record " + std::to_string(records_));
        fail(ended);
    }
    return ended == ALA_A_LAST_ATTRIBUTE;
}

void SumWriter::skip(const LogName &name, LineWriter &) {
    beginLog(name);
    addMissing("cannot be opened");
}

void SumWriter::readFailed() {
    addMissing("cannot be read after record " + std::to_string(records_));
    fail(ALA_A_FAIL_READ_LOG_FILE);
}

void SumWriter::listIsCut(const char *server, LineWriter &) {
    page_.missing.push_back({server, "", 0, 0, "the folder of the logs cannot be read to its end"});
    fail(ALA_A_FAIL_OPEN_DIR);
}

void SumWriter::endRun(LineWriter &report) {
    for (const char *server : servers_) {
        page_.servers.emplace_back(server);
        if (!seen_.contains(server))
            page_.missing.push_back({server, "", 0, 0, "no log was read"});
    }
    addRows(page_, groups_);
    std::string text = pageText(page_);
    text.pop_back();
    report.put(text);
    report.endLine();
}

int SumWriter::status() const {
    if (failure_ != ALA_N_NORMAL)
        return failure_;
    return page_.missing.empty() ? 0 : kStatusIncomplete;
}
