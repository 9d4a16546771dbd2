// The report: one line of tab-separated text per job record, under -a one further line per further document,
// and a header line of names wherever the names change.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/log_output.h"

namespace qvledger {

// 1 under -a: document attributes go into the report as well.
extern std::int32_t needDoc;

// Writes all records of an open log.  inoutp_list carries the names of the record written last from one log
// to the next.  True when the walk ended at the end of the log and nothing in it had to be passed over, also
// of a log without a record; every failure but those inside documents was told to the user.
bool doLog(ALA_handle_t mainh, ALA_acctLogHandle_t *loghPtr, std::int32_t *doHeader, LineWriter &fl,
           std::int32_t suppressHeaders, ALA_attrName **inoutp_list);

// Writes the names (isHeader non-zero) or the values of a record.  False when a failure was told to the user,
// or documents were passed over.
bool doLine(ALA_handle_t mainh, ALA_record_t *recordPtr, std::int32_t isHeader, LineWriter &fl);

// Goes on with the record's documents behind numJobAttrs attributes of the job.  The last code of the
// facility.
std::int32_t getDocmt(ALA_handle_t alaHandle, ALA_record_t *record, LineWriter &fl, std::int32_t isHeader,
                      std::int32_t numJobAttrs);

// 1 if both lists have the same names at the same places, else 0.
std::int32_t equalList(const ALA_attrName *list1, const ALA_attrName *list2);

// The report of a run.
class ReportWriter final : public LogOutput {
public:
    // suppressHeadflg: 1 leaves header lines out.
    explicit ReportWriter(std::int32_t suppressHeadflg) : suppressHeadflg_(suppressHeadflg) {}
    ~ReportWriter() override { freeNames(); }
    ReportWriter(const ReportWriter &) = delete;
    ReportWriter &operator=(const ReportWriter &) = delete;

    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &name,
               LineWriter &report) override;
    void end() override { freeNames(); }

private:
    void freeNames();

    std::int32_t suppressHeadflg_;
    ALA_attrName *prevLog_ = nullptr; // names of the record written last
};

} // namespace qvledger
