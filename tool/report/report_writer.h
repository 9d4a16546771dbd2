// The report of qvledger: one line of tab-separated text per job record, with -a one more line per document
// after the first, and a header line of names whenever the names change.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/log_output.h"

namespace qvledger {

// 1 with -a: report document attributes, too.
extern std::int32_t needDoc;

// Writes all records of an open log.  inoutp_list contains the names of the last record written, and is kept
// from one log to the next.  Returns true if the end of the log was reached and nothing was skipped, or if
// the log has no records.  Reports all failures except those inside documents.
bool doLog(ALA_handle_t mainh, ALA_acctLogHandle_t *loghPtr, std::int32_t *doHeader, LineWriter &fl,
           std::int32_t suppressHeaders, ALA_attrName **inoutp_list);

// Writes the names (isHeader non-zero) or the values of a record.  Returns false if a failure occurred, which
// is reported, or if documents were skipped.
bool doLine(ALA_handle_t mainh, ALA_record_t *recordPtr, std::int32_t isHeader, LineWriter &fl);

// Continues the line with the record's documents, after numJobAttrs attributes of the job.  Returns the last
// ALA return code.
std::int32_t getDocmt(ALA_handle_t alaHandle, ALA_record_t *record, LineWriter &fl, std::int32_t isHeader,
                      std::int32_t numJobAttrs);

// 1 if both lists have the same names in the same order, else 0.
std::int32_t equalList(const ALA_attrName *list1, const ALA_attrName *list2);

// Writes the report of a run.
class ReportWriter final : public LogOutput {
public:
    // suppressHeadflg: 1 suppresses header lines.
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
    ALA_attrName *prevLog_ = nullptr; // names of the last record written
};

} // namespace qvledger
