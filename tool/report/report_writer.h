// The report of qvledger: one line of tab-separated text per job record, with -a one more line per document
// after the first, and without -g a header line of names whenever the names change.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "tool/log_output.h"

namespace qvledger {

// 1 with -a: report document attributes, too.
extern std::int32_t needDoc;

// Writes all records of an open log, and a header line whenever the names change.  *inoutp_list: the names of
// the previous log's last record, or null; at the end of this log, replaced by the names of its last record.
// *doHeader non-zero: a header line comes before the first record, unless its names are those of
// *inoutp_list; becomes 0 with that line.  suppressHeaders non-zero: no header lines.  Returns true if the
// end of the log was reached and nothing was skipped, or if the log has no records.  Does not report failures
// inside documents.
bool doLog(ALA_handle_t mainh, ALA_acctLogHandle_t *loghPtr, std::int32_t *doHeader, LineWriter &fl,
           std::int32_t suppressHeaders, ALA_attrName **inoutp_list);

// Writes the names (isHeader non-zero) or the values of a record.  Returns false if not all of them were
// written.  Does not report failures inside documents.
bool doLine(ALA_handle_t mainh, ALA_record_t *recordPtr, std::int32_t isHeader, LineWriter &fl);

// Continues the line with the record's first document.  Without isHeader, writes each other document to a new
// line, after numJobAttrs empty fields.  Does not end the last line.  Returns the last ALA return code.
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
    ALA_attrName *prevLog_ = nullptr; // names for doLog()
};

} // namespace qvledger
