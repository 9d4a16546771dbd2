// Sums the logs of a run, and writes the page at the end of the run.
#pragma once

#include <set>
#include <span>
#include <string>
#include <vector>

#include "tool/missing.h"
#include "tool/opened_logs.h"
#include "tool/sum/job_reader.h"
#include "tool/sum/sum_options.h"
#include "tool/sum/sum_page.h"

namespace qvledger {

class SumWriter final : public LogOutput {
public:
    // REQUIRES: options and servers outlive this object.
    SumWriter(const SumOptions &options, const DateRange &range, std::span<const char *const> servers)
        : page_{.options = options}, reader_(options.parts), gaps_(range), servers_(servers) {}

    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
               LineWriter &report) override;
    void outsideRange(const LogName &name) override { gaps_.date(name.server, name.date, page_.missing); }
    void skip(const LogName &name, LineWriter &report) override;
    void readFailed() override;
    void listIsCut(const char *server, LineWriter &report) override;
    void endRun(LineWriter &report) override;

    // The exit status if the run returns 0: the code of the first failure that the writer found;
    // kStatusIncomplete if something else is missing from the sums; otherwise 0.
    int status() const;

private:
    void beginLog(const LogName &name);
    ALA_retCode_t sumJobs(ALA_handle_t handle, ALA_acctLogHandle_t log, const LineWriter &report);
    void addJob();
    void addMissing(const std::string &reason);
    void fail(ALA_retCode_t code);

    SumPage page_;
    Groups groups_;
    JobReader reader_;
    DayGaps gaps_;
    std::span<const char *const> servers_;
    std::set<std::string, std::less<>> seen_; // servers with at least one log
    std::string server_, file_;               // those of the last log
    std::int32_t date_ = 0;
    OpenedLogs opened_;
    std::uint64_t records_ = 0;            // records read from the last log
    std::uint64_t unreadable_ = 0;         // records of the last log with unreadable values
    ALA_retCode_t failure_ = ALA_N_NORMAL; // code of the first failure
};

} // namespace qvledger
