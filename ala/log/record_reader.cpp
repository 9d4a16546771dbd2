// The bytes at the log's position as one job record.
#include "ala/log/record_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/log/open_log.h"
#include "ala/log/read_ahead.h"

using namespace qvledger;

namespace {

// What the two reading operations do differently, beside the wording of some lines.
struct ReaderRules {
    const char *operation;
    bool isFirst; // after a failure back to the file's first byte; otherwise to the record's
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

static ALA_retCode_t readCounts(LogInput &in, std::uint32_t verNum, const ReaderRules &rules,
                                Counts *counts) {
    if (!in.readNetWord(&counts->numAttr)) {
        if (in.consumed() == 0 && !rules.isFirst)
            return ALA_FAIL(ALA_A_LAST_ATTRIBUTE, "read failed in %s; numAttr = %d ALA_A_LAST_ATTRIBUTE",
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
    if (!in.readNetWord(&counts->numJobAttr))
        return noCount(rules, "read failed, job attrs, numJobAttr = 0,", "read, job attrs failed");
    if (!in.readNetWord(&counts->docAttrPerDoc))
        return noCount(rules, "read failed, doc attrs, docAttrPerDoc = 0,", "read, doc attrs failed");
    return ALA_N_NORMAL;
}

// The failure of a read inside the attributes; a count of values stands for "none read yet" as 0.
static ALA_retCode_t cutRecord(const ReaderRules &rules, std::uint32_t givenAttr, std::uint32_t givenNumAttr,
                               std::uint32_t givenValue, std::uint32_t givenNumValues) {
    const auto attr = static_cast<std::int32_t>(givenAttr);
    const auto numAttr = static_cast<std::int32_t>(givenNumAttr);
    const auto value = static_cast<std::int32_t>(givenValue);
    const auto numValues = static_cast<std::int32_t>(givenNumValues);
    return rules.isFirst
               ? ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE,
                          "(%d < %d) || (%d<%d in ALA_GetFirstJobRecord; ALA_A_FAIL_READ_LOG_FILE", attr,
                          numAttr, value, numValues)
               : ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE,
                          "(%d < %d) || (%d < %d) in ALA_GetNextJobRecord; ALA_A_FAIL_READ_LOG_FILE", attr,
                          numAttr, value, numValues);
}

static ALA_retCode_t readValues(LogInput &in, record *jobRecord, std::uint32_t attr,
                                const ReaderRules &rules) {
    attrValNode &node = jobRecord->attrValList[attr];
    std::uint32_t room = 0;
    for (std::uint32_t i = 0; i < node.numAttrVal; ++i) {
        if (i == room) {
            room = nextRoom(node.numAttrVal, kTrustedBytes / sizeof(GEN_string), room);
            auto *values = static_cast<GEN_string *>(jobRecord->memory.allocate(room * sizeof(GEN_string)));
            if (values == nullptr)
                return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                                "Could not allocate memory for record->attrValList[%d].attrVals in %s; "
                                "ALA_A_OUT_OF_MEMORY",
                                static_cast<std::int32_t>(attr), rules.operation);
            std::copy_n(node.attrVals, i, values);
            node.attrVals = values;
        }
        std::uint32_t length = 0;
        if (!in.readNativeWord(&length))
            return cutRecord(rules, attr, jobRecord->numAttr, i, node.numAttrVal);
        if (rules.isFirst)
            ALA_DETAIL("attrVals->length: %d\n", static_cast<std::int32_t>(length));
        switch (readValueBytes(in, length, jobRecord->memory, &node.attrVals[i])) {
        case ReadResult::Whole:
            break;
        case ReadResult::Cut:
            return cutRecord(rules, attr, jobRecord->numAttr, i, node.numAttrVal);
        case ReadResult::NoMemory:
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                            "Could not allocate memory for attrVals->_value in %s; ALA_A_OUT_OF_MEMORY",
                            rules.operation);
        }
    }
    return ALA_N_NORMAL;
}

static void logTag(const attrValNode &node, const ReaderRules &rules) {
    const auto numValues = static_cast<std::int32_t>(node.numAttrVal);
    const auto id = static_cast<std::int32_t>(node.attrID);
    const auto type = static_cast<std::int32_t>(node.attrValType);
    if (rules.isFirst)
        return ALA_DETAIL("ALA_GetFirstJobRecord numAttrVal: %d, attrID: %d, attrValType: %d, decoid: %s\n",
                          numValues, id, type, node.decoid);
    ALA_DETAIL("numAttrVal: %d, attrID: %d, attrValType: %d, decoid: %s\n", numValues, id, type, node.decoid);
    ALA_DETAIL("numAttrs: %d\n", numValues);
}

static ALA_retCode_t readAttribute(LogInput &in, record *jobRecord, std::uint32_t attr,
                                   const ReaderRules &rules) {
    attrValNode &node = jobRecord->attrValList[attr];
    ALA_attrTag_t &tag = node;
    if (!in.read(&tag, sizeof tag))
        return cutRecord(rules, attr, jobRecord->numAttr, 0, 0);
    node.decoid[kDecoidSize - 1] = '\0';
    node.oid = nullptr;
    node.attrVals = nullptr;
    node.column = ColumnStamp(attr);
    if (LOG_Wants(LOG_DETAIL))
        logTag(node, rules);
    return readValues(in, jobRecord, attr, rules);
}

static ALA_retCode_t readAttributes(LogInput &in, record *jobRecord, const ReaderRules &rules) {
    std::uint32_t room = 0;
    for (std::uint32_t i = 0; i < jobRecord->numAttr; ++i) {
        if (i == room) {
            room = nextRoom(jobRecord->numAttr, kTrustedBytes / sizeof(attrValNode), room);
            auto *list = static_cast<attrValNode *>(jobRecord->memory.allocate(room * sizeof(attrValNode)));
            if (list == nullptr)
                return ALA_FAIL(
                    ALA_A_OUT_OF_MEMORY,
                    "Could not allocate memory for record->attrValList in %s; ALA_A_OUT_OF_MEMORY",
                    rules.operation);
            std::copy_n(jobRecord->attrValList, i, list);
            jobRecord->attrValList = list;
        }
        if (const ALA_retCode_t result = readAttribute(in, jobRecord, i, rules); result != ALA_N_NORMAL)
            return result;
    }
    return ALA_N_NORMAL;
}

static ALA_retCode_t readRecord(LogInput &in, std::uint32_t verNum, const ReaderRules &rules,
                                Owned<record> &jobRecord) {
    Counts counts = {};
    if (const ALA_retCode_t result = readCounts(in, verNum, rules, &counts); result != ALA_N_NORMAL)
        return result;
    jobRecord = makeOwned<record>();
    if (jobRecord == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for record in %s; ALA_A_OUT_OF_MEMORY", rules.operation);
    jobRecord->numAttr = counts.numAttr;
    jobRecord->numJobAttr = counts.numJobAttr;
    jobRecord->docAttrPerDoc = counts.docAttrPerDoc;
    return readAttributes(in, jobRecord.get(), rules);
}

// Where a record does not read, and why.
static void logPlace(const logParams &log, const LogInput &in, ALA_retCode_t result) {
    const char *why = in.error() != 0 ? std::strerror(in.error()) : "the file ends";
    const std::int64_t reached = seekLog(log.fd, 0, SEEK_CUR);
    ALA_DETAIL("%s: the record at byte %lld does not read beyond byte %lld: %s\n", log.logName,
               static_cast<long long>(reached - in.consumed()), static_cast<long long>(reached),
               result == ALA_A_NO_MORE_JOB ? "it counts no attributes" : why);
}

static ALA_retCode_t getJobRecord(ALA_handle_t alaHandle, ALA_acctLogHandle_t *logHandle,
                                  ALA_record_t *jobRecord, const ReaderRules &rules) {
    *jobRecord = nullptr;
    if (const ALA_retCode_t valid = ALA__CheckHandle(alaHandle, rules.operation); valid != ALA_N_NORMAL)
        return valid;
    if (logHandle == nullptr)
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE, "inoutp_logHandle is NULL in %s; ALA_A_INVALID_LOG_HANDLE",
                        rules.operation);
    logParams *log = *logHandle;
    if (log == nullptr || log->pid != _getpid())
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE,
                        "logHandle is NULL or logHandle->pid!=getpid in %s; ALA_A_INVALID_LOG_HANDLE",
                        rules.operation);

    LogInput in(log->fd);
    Owned<record> read;
    const ALA_retCode_t result = readRecord(in, log->verNum, rules, read);
    log->end = in.metEnd() && in.consumed() == 0 ? seekLog(log->fd, 0, SEEK_CUR) : -1;
    log->readError = in.error();
    log->holdsNoRecord = log->end >= 0 && rules.isFirst;
    if (result == ALA_N_NORMAL) {
        *jobRecord = read.release();
        return result;
    }
    if (LOG_Wants(LOG_DETAIL) && log->end < 0 && result != ALA_A_OUT_OF_MEMORY)
        logPlace(*log, in, result);
    record *partial = read.release();
    if (rules.isFirst)
        ALA__GetJobRecordCleanup(&partial, &log->fd, 0, SEEK_SET);
    else
        ALA__GetJobRecordCleanup(&partial, &log->fd, -in.consumed(), SEEK_CUR);
    return result;
}

void ALA__GetJobRecordCleanup(record **inoutpp_record, const std::int32_t *inoutp_fd, std::int64_t in_offset,
                              std::int32_t in_pos) {
    static_cast<void>(seekLog(*inoutp_fd, in_offset, in_pos));
    const Owned<record> partial(std::exchange(*inoutpp_record, nullptr));
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

std::int32_t ALA_ReadError(ALA_acctLogHandle_t in_log) {
    return in_log->readError;
}

ALA_retCode_t ALA_FreeJobRecord(ALA_record_t *inoutp_record) {
    const FuncTrace trace("ALA_FreeJobRecord");
    if (inoutp_record == nullptr || *inoutp_record == nullptr)
        return ALA_N_NORMAL;
    const Owned<record> released(std::exchange(*inoutp_record, nullptr));
    return ALA_N_NORMAL;
}
