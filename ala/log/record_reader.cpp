// Reads the next job record of an open log.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "ala/base/handle.h"
#include "ala/base/record.h"
#include "ala/base/trace.h"
#include "ala/log/log_file.h"
#include "ala/log/open_log.h"

using namespace qvledger;

namespace {

// The differences between ALA_GetFirstJobRecord and ALA_GetNextJobRecord.  isFirst also selects some log
// lines and the code for a record that is not there.
struct ReaderRules {
    const char *operation;
    bool isFirst; // true: a failure sets the position to byte 0; false: to the record's start
};

constexpr ReaderRules kFirstRecord = {"ALA_GetFirstJobRecord", true};
constexpr ReaderRules kNextRecord = {"ALA_GetNextJobRecord", false};

struct Counts {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;
    std::uint32_t docAttrPerDoc;
};

} // namespace

static ALA_retCode_t noCount(const ReaderRules &rules, const char *wordsOfFirst, const char *wordsOfNext) {
    return ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "%s in %s; ALA_A_FAIL_READ_LOG_FILE",
                    rules.isFirst ? wordsOfFirst : wordsOfNext, rules.operation);
}

static ALA_retCode_t noMemory(const ReaderRules &rules) {
    return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for record in %s; ALA_A_OUT_OF_MEMORY",
                    rules.operation);
}

static ALA_retCode_t readCounts(LogFile &in, std::uint32_t verNum, const ReaderRules &rules, Counts *counts) {
    if (!in.needNetWord(&counts->numAttr)) {
        if (in.outOfMemory())
            return noMemory(rules);
        // If the read failed, logPlace() logs the failure.
        if (!rules.isFirst && (in.error() != 0 || in.isAtEnd()))
            return ALA_EXPECTED(ALA_A_LAST_ATTRIBUTE, "read failed in %s; numAttr = %d ALA_A_LAST_ATTRIBUTE",
                                rules.operation, 0);
        return ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "read failed in %s; numAttr = %d; ALA_A_FAIL_READ_LOG_FILE",
                        rules.operation, 0);
    }
    if (counts->numAttr == 0)
        return rules.isFirst
                   ? ALA_FAIL(ALA_A_NO_MORE_JOB, "numAttr < 0 in ALA_GetFirstJobRecord; ALA_A_NO_MORE_JOB")
                   : ALA_FAIL(ALA_A_NO_MORE_JOB, "numAttr %d < 0 in ALA_GetNextJobRecord; ALA_A_NO_MORE_JOB",
                              0);
    if (verNum < kVersionWithCounts)
        return ALA_N_NORMAL;
    if (!in.needNetWord(&counts->numJobAttr))
        return in.outOfMemory()
                   ? noMemory(rules)
                   : noCount(rules, "read failed, job attrs, numJobAttr = 0,", "read, job attrs failed");
    if (!in.needNetWord(&counts->docAttrPerDoc))
        return in.outOfMemory()
                   ? noMemory(rules)
                   : noCount(rules, "read failed, doc attrs, docAttrPerDoc = 0,", "read, doc attrs failed");
    return ALA_N_NORMAL;
}

// Logs that an attribute is incomplete, invalid or cannot be read, and returns the code.  valueIndex and
// valueCount are 0 if the attribute's tag could not be read.
static ALA_retCode_t cutRecord(const ReaderRules &rules, std::uint32_t attrIndex, std::uint32_t attrCount,
                               std::uint32_t valueIndex, std::uint32_t valueCount) {
    const auto attr = static_cast<std::int32_t>(attrIndex);
    const auto numAttr = static_cast<std::int32_t>(attrCount);
    const auto value = static_cast<std::int32_t>(valueIndex);
    const auto numValues = static_cast<std::int32_t>(valueCount);
    return rules.isFirst
               ? ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE,
                          "(%d < %d) || (%d<%d in ALA_GetFirstJobRecord; ALA_A_FAIL_READ_LOG_FILE", attr,
                          numAttr, value, numValues)
               : ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE,
                          "(%d < %d) || (%d < %d) in ALA_GetNextJobRecord; ALA_A_FAIL_READ_LOG_FILE", attr,
                          numAttr, value, numValues);
}

static ALA_retCode_t readValue(LogFile &in, std::uint32_t attr, const ReaderRules &rules,
                               const Counts &counts, std::uint32_t value, std::uint32_t numAttrVal) {
    std::uint32_t length = 0;
    if (!in.needNativeWord(&length))
        return in.outOfMemory()
                   ? ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                              "Could not allocate memory for record->attrValList[%d].attrVals in "
                              "%s; ALA_A_OUT_OF_MEMORY",
                              static_cast<std::int32_t>(attr), rules.operation)
                   : cutRecord(rules, attr, counts.numAttr, value, numAttrVal);
    if (rules.isFirst)
        ALA_DETAIL("attrVals->length: %d\n", static_cast<std::int32_t>(length));
    if (!isValueLength(length))
        return cutRecord(rules, attr, counts.numAttr, value, numAttrVal);
    if (in.need(length) == nullptr)
        return in.outOfMemory()
                   ? ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                              "Could not allocate memory for attrVals->_value in %s; ALA_A_OUT_OF_MEMORY",
                              rules.operation)
                   : cutRecord(rules, attr, counts.numAttr, value, numAttrVal);
    return ALA_N_NORMAL;
}

static void copyTag(const std::uint8_t *from, attrTag *tag) {
    std::memcpy(tag, from, sizeof *tag);
    tag->decoid[kDecoidSize - 1] = '\0';
}

static void logTag(const std::uint8_t *bytes, const ReaderRules &rules) {
    attrTag tag;
    copyTag(bytes, &tag);
    const auto numValues = static_cast<std::int32_t>(tag.numAttrVal);
    const auto id = static_cast<std::int32_t>(tag.attrID);
    const auto type = static_cast<std::int32_t>(tag.attrValType);
    if (rules.isFirst)
        return ALA_DETAIL("ALA_GetFirstJobRecord numAttrVal: %d, attrID: %d, attrValType: %d, decoid: %s\n",
                          numValues, id, type, tag.decoid);
    ALA_DETAIL("numAttrVal: %d, attrID: %d, attrValType: %d, decoid: %s\n", numValues, id, type, tag.decoid);
    ALA_DETAIL("numAttrs: %d\n", numValues);
}

// Reads an attribute, and adds its number of values to *values.
static ALA_retCode_t readAttribute(LogFile &in, std::uint32_t attr, const ReaderRules &rules,
                                   const Counts &counts, std::size_t *values) {
    const std::uint8_t *tag = in.need(sizeof(attrTag));
    if (tag == nullptr)
        return in.outOfMemory()
                   ? ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                              "Could not allocate memory for record->attrValList in %s; ALA_A_OUT_OF_MEMORY",
                              rules.operation)
                   : cutRecord(rules, attr, counts.numAttr, 0, 0);
    if (LOG_Wants(LOG_DETAIL)) [[unlikely]]
        logTag(tag, rules);
    const std::uint32_t numAttrVal = nativeWord(tag + offsetof(attrTag, numAttrVal));
    for (std::uint32_t i = 0; i < numAttrVal; ++i)
        if (const ALA_retCode_t result = readValue(in, attr, rules, counts, i, numAttrVal);
            result != ALA_N_NORMAL)
            return result;
    *values += numAttrVal;
    return ALA_N_NORMAL;
}

// Fills the nodes from the record's bytes, and points each node to its values among these bytes.
static void setNodes(std::uint32_t numAttr, const RecordParts &parts) {
    std::uint8_t *at = parts.bytes;
    GEN_string *value = parts.values;
    for (attrValNode *node = parts.nodes; node != parts.nodes + numAttr; ++node) {
        copyTag(at, node);
        at += sizeof(attrTag);
        node->oid = nullptr;
        node->attrVals = node->numAttrVal != 0 ? value : nullptr;
        for (const GEN_string *end = value + node->numAttrVal; value != end; ++value) {
            const std::uint32_t length = nativeWord(at);
            at += sizeof length;
            *value = {static_cast<std::int32_t>(length), at};
            at += length;
        }
    }
}

// Reads the whole record before it allocates the result.
static ALA_retCode_t readRecord(LogFile &in, std::uint32_t verNum, const ReaderRules &rules,
                                Malloced<record> &jobRecord) {
    Counts counts = {};
    if (const ALA_retCode_t result = readCounts(in, verNum, rules, &counts); result != ALA_N_NORMAL)
        return result;
    const std::size_t head = in.itemSize();
    std::size_t values = 0;
    for (std::uint32_t i = 0; i < counts.numAttr; ++i)
        if (const ALA_retCode_t result = readAttribute(in, i, rules, counts, &values); result != ALA_N_NORMAL)
            return result;
    RecordParts parts = {};
    const std::size_t size = in.itemSize() - head;
    jobRecord = makeRecord<record>(counts.numAttr, values, size, &parts);
    if (jobRecord == nullptr)
        return noMemory(rules);
    jobRecord->numAttr = counts.numAttr;
    jobRecord->numJobAttr = counts.numJobAttr;
    jobRecord->docAttrPerDoc = counts.docAttrPerDoc;
    jobRecord->bytes = parts.bytes;
    jobRecord->size = size;
    std::memcpy(parts.bytes, in.item() + head, size);
    setNodes(counts.numAttr, parts);
    in.consume();
    return ALA_N_NORMAL;
}

// Logs where and why a record could not be read.
static void logPlace(const logParams &log, ALA_retCode_t result) {
    const LogFile &in = log.bytes;
    const char *why = in.error() != 0 ? std::strerror(in.error()) : "the file ends";
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                    "%s, date %d: the record at byte %lld cannot be read after byte %lld: %s\n", log.logName,
                    log.date, static_cast<long long>(in.position()), static_cast<long long>(in.reach()),
                    result == ALA_A_NO_MORE_JOB ? "it has no attributes" : why);
}

// Cleans up after a failed read: sets the file's position and frees the record, which may be null.
static void ALA__GetJobRecordCleanup(record **inoutpp_record, const std::int32_t *inoutp_fd,
                                     std::int64_t in_offset, std::int32_t in_pos) {
    static_cast<void>(_lseeki64(*inoutp_fd, in_offset, in_pos));
    std::free(std::exchange(*inoutpp_record, nullptr));
}

static ALA_retCode_t getJobRecord(ALA_handle_t alaHandle, ALA_acctLogHandle_t *logHandle,
                                  ALA_record_t *jobRecord, const ReaderRules &rules) {
    *jobRecord = nullptr;
    if (const ALA_retCode_t valid = checkHandle(alaHandle, rules.operation); valid != ALA_N_NORMAL)
        return valid;
    if (logHandle == nullptr)
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE, "inoutp_logHandle is NULL in %s; ALA_A_INVALID_LOG_HANDLE",
                        rules.operation);
    logParams *log = *logHandle;
    if (log == nullptr || log->pid != _getpid())
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE,
                        "logHandle is NULL or logHandle->pid!=getpid in %s; ALA_A_INVALID_LOG_HANDLE",
                        rules.operation);

    LogFile &in = log->bytes;
    log->end = -1;
    log->readError = 0;
    log->holdsNoRecord = false;
    Malloced<record> read;
    const ALA_retCode_t result = readRecord(in, log->verNum, rules, read);
    *jobRecord = read.release();
    if (result == ALA_N_NORMAL)
        return result;
    log->end = in.isAtEnd() ? in.position() : -1;
    log->readError = in.error();
    log->holdsNoRecord = in.isAtEnd() && rules.isFirst;
    if (log->end < 0 && result != ALA_A_OUT_OF_MEMORY)
        logPlace(*log, result);
    in.moveTo(rules.isFirst ? 0 : in.position());
    ALA__GetJobRecordCleanup(jobRecord, &log->fd, in.position(), SEEK_SET);
    return result;
}

ALA_retCode_t ALA_GetFirstJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                    ALA_record_t *outp_record) {
    const FuncTrace trace(kFirstRecord.operation);
    return getJobRecord(in_alaHandle, inoutp_logHandle, outp_record, kFirstRecord);
}

ALA_retCode_t ALA_GetNextJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                   ALA_record_t *outp_record) {
    const FuncTrace trace(kNextRecord.operation);
    return getJobRecord(in_alaHandle, inoutp_logHandle, outp_record, kNextRecord);
}

std::int32_t ALA_ReadError(ALA_acctLogHandle_t log) {
    return log->readError;
}

ALA_retCode_t ALA_FreeJobRecord(ALA_record_t *inoutp_record) {
    const FuncTrace trace("ALA_FreeJobRecord");
    if (inoutp_record == nullptr || *inoutp_record == nullptr)
        return ALA_N_NORMAL;
    std::free(std::exchange(*inoutp_record, nullptr));
    return ALA_N_NORMAL;
}
