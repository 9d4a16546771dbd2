#include "ala/salvage/summary.h"

#include "ala/base/handle.h"

using namespace qvledger;

static SkipReason reasonOf(ALA_retCode_t code) {
    switch (code) {
    case ALA_A_ODPUNPACK_ERROR:
        return SkipReason::Unpack;
    case ALA_A_OID_ERROR:
        return SkipReason::Name;
    case ALA_A_FAIL_TO_GET_TIME:
        return SkipReason::Time;
    case ALA_A_OUT_OF_MEMORY:
        return SkipReason::Memory;
    default:
        return SkipReason::Other;
    }
}

// Renders all attributes that first() and next() return.  Returns the code that ended the loop.
template <class Record, class First, class Next>
static ALA_retCode_t renderAttributes(ALA_handle_t handle, Record record, First first, Next next,
                                      LogSummary &summary) {
    ALA_retCode_t result = ALA_N_NORMAL;
    for (bool started = false;; started = true) {
        const std::uint64_t before = handle->valuesSkipped;
        ALA_attrPair *pair = nullptr;
        result = started ? next(handle, &record, nullptr, &pair) : first(handle, &record, nullptr, &pair);
        if (pair != nullptr)
            ALA_FreeAttributePair(&pair);
        // Earlier values may have failed with another code, so count the skipped values instead of the codes.
        noteSkipped(summary, reasonOf(result), handle->valuesSkipped - before);
        if (result == ALA_A_LAST_ATTRIBUTE || result == ALA_A_NO_MORE_JOB_ATTR ||
            result == ALA_A_INVALID_RECORD)
            return result;
    }
}

static void renderDocuments(ALA_handle_t handle, ALA_record_t record, LogSummary &summary) {
    ALA_dRecord_t document = nullptr;
    ALA_retCode_t result = ALA_GetFirstDocmt(handle, &record, &document);
    while (result == ALA_N_NORMAL && document != nullptr) {
        ++summary.documents;
        renderAttributes(handle, document, ALA_GetFirstAttrFromDoc, ALA_GetNextAttrFromDoc, summary);
        ALA_FreeDocmtRecord(&document);
        result = ALA_GetNextDocmt(handle, &record, &document);
    }
    if (result != ALA_N_NORMAL && result != ALA_A_NO_MORE_DOCMT_ATTR)
        noteSkipped(summary, reasonOf(result), 1);
}

ALA_retCode_t qvledger::summarise(ALA_handle_t handle, logParams &log, LogSummary &summary) {
    ALA_acctLogHandle_t logHandle = &log;
    ALA_record_t job = nullptr;
    if (const ALA_retCode_t result = ALA_GetNextJobRecord(handle, &logHandle, &job); result != ALA_N_NORMAL)
        return result;
    const ALA_retCode_t ended =
        renderAttributes(handle, job, ALA_GetFirstAttrFromJob, ALA_GetNextAttrFromJob, summary);
    if (ended == ALA_A_NO_MORE_JOB_ATTR)
        renderDocuments(handle, job, summary);
    ALA_FreeJobRecord(&job);
    return ALA_N_NORMAL;
}
