// The cursors over the attributes of a job and of a document.
#include "ala/cursor/cursor.h"

#include <cstring>

#include "ala/base/trace.h"
#include "ala/driver.h"
#include "ala/render/render.h"

std::int32_t ALA__FillOid(STF_l__hdr *in_status, attrValNode *inoutp_node) {
    const std::int32_t result = OID_ConvertDecToBin(in_status, inoutp_node->decoid, inoutp_node->oidBytes, 0);
    inoutp_node->oid = result == 0 ? inoutp_node->oidBytes : nullptr;
    return result;
}

// Renders one value, or the lack of any, into the pair.
static ALA_retCode_t deliverValue(ALA_handle_t in_handle, const attrValNode &in_node,
                                  std::string_view in_knownName, void *in_value,
                                  AS_attrValDesc_t in_description, const char *inp_locale,
                                  ALA_attrPair **outp_attribute) {
    const ALA_retCode_t result = ALA__GetNamedAttribute(&in_node, in_knownName, in_value, in_description,
                                                        inp_locale, &in_handle->oidHandle, outp_attribute);
    if (result != ALA_N_NORMAL)
        ++in_handle->valuesPassedOver;
    return result;
}

// Renders the values in turn.  The last one's result counts; that of an earlier one shows as a missing value.
static ALA_retCode_t deliverValues(STF_l__hdr *in_status, ALA_handle_t in_handle, const attrValNode *inp_node,
                                   std::string_view in_knownName, const char *inp_locale,
                                   const CursorTexts &in_texts, ALA_attrPair **outp_attribute,
                                   bool *outp_complete) {
    ALA_retCode_t result = ALA_N_NORMAL;
    for (std::uint32_t i = 0; i < inp_node->numAttrVal; ++i) {
        const GEN_string &packed = inp_node->attrVals[i];
        void *value = nullptr;
        AS_attrValDesc_t description = {};
        if (ODP_UnpackAV(in_status, packed.length, packed._value, inp_node->attrValType, &value,
                         &description) != 0) {
            ++in_handle->valuesPassedOver;
            return ALA_FAIL(ALA_A_ODPUNPACK_ERROR,
                            "ODP_UnpackAV failed for attr val type %d in %s; ALA_A_ODPUNPACK_ERROR",
                            static_cast<std::int32_t>(inp_node->attrValType), in_texts.operation);
        }
        result =
            deliverValue(in_handle, *inp_node, in_knownName, value, description, inp_locale, outp_attribute);
    }
    if (inp_node->numAttrVal == 0)
        result = deliverValue(in_handle, *inp_node, in_knownName, nullptr, {}, inp_locale, outp_attribute);
    *outp_complete = true;
    return result;
}

ALA_retCode_t ALA__DeliverAttribute(ALA_handle_t in_handle, attrValNode *inoutp_node, const char *inp_locale,
                                    const CursorTexts &in_texts, ALA_attrPair **outp_attribute,
                                    bool *outp_complete) {
    const StatusList status;
    if (inp_locale != nullptr)
        in_handle->columns.forget();
    const std::string_view knownName = in_handle->columns.recall(inoutp_node->decoid, inoutp_node->column);
    const bool isKnown = knownName.data() != nullptr;
    if (const std::int32_t result = isKnown ? 0 : ALA__FillOid(status, inoutp_node); result != 0) {
        ++in_handle->valuesPassedOver;
        return ALA_FAIL(ALA_A_OID_ERROR,
                        "OID_ConvertDecToBin failed in %s; oid status = 0x%X; decoid = %s; ALA_A_OID_ERROR",
                        in_texts.operation, static_cast<unsigned>(result), inoutp_node->decoid);
    }
    const ALA_retCode_t result = deliverValues(status, in_handle, inoutp_node, knownName, inp_locale,
                                               in_texts, outp_attribute, outp_complete);
    if (!isKnown && inp_locale == nullptr && *outp_attribute != nullptr)
        in_handle->columns.remember(inoutp_node->decoid, inoutp_node->column, (*outp_attribute)->attrName);
    return result;
}

std::uint64_t ALA__ValuesPassedOver(ALA_handle_t in_handle) {
    return in_handle->valuesPassedOver;
}

template <class Record>
ALA_retCode_t ALA__CheckRecord(ALA_handle_t in_handle, Record **inoutp_curRecord,
                               const CursorTexts &in_texts) {
    if (const ALA_retCode_t valid = ALA__CheckHandle(in_handle, in_texts.operation); valid != ALA_N_NORMAL)
        return valid;
    if (inoutp_curRecord == nullptr)
        return ALA_FAIL(ALA_A_INVALID_RECORD, "inoutp_curRecord is NULL in %s; ALA_A_INVALID_RECORD",
                        in_texts.operation);
    if (*inoutp_curRecord == nullptr || (*inoutp_curRecord)->attrValList == nullptr)
        return ALA_FAIL(ALA_A_INVALID_RECORD, "%s", in_texts.invalidRecord);
    return ALA_N_NORMAL;
}
template ALA_retCode_t ALA__CheckRecord(ALA_handle_t, record **, const CursorTexts &);
template ALA_retCode_t ALA__CheckRecord(ALA_handle_t, docRecord **, const CursorTexts &);

// Delivers the node at the cursor's index.  The cursor stands on it only once its rendering has reached its
// end.
template <class Record>
static ALA_retCode_t deliverAtIndex(ALA_handle_t in_handle, Record *inoutp_record, const char *inp_locale,
                                    const CursorTexts &in_texts, ALA_attrPair **outp_attribute) {
    attrValNode *node = inoutp_record->attrValList + inoutp_record->index;
    bool complete = false;
    const ALA_retCode_t result =
        ALA__DeliverAttribute(in_handle, node, inp_locale, in_texts, outp_attribute, &complete);
    if (complete)
        inoutp_record->curAttr = node;
    return result;
}

constexpr CursorTexts kFirstFromJob = {
    "ALA_GetFirstAttrFromJob",
    "record or record->attrValList is NULL in ALA_GetFirstAttrFromJob; ALA_A_INVALID_RECORD"};
constexpr CursorTexts kNextFromJob = {"ALA_GetNextAttrFromJob",
                                      "record or record->attrValList is NULL or record->numAttr < 0 in "
                                      "ALA_GetNextAttrFromJob; ALA_A_INVALID_RECORD"};
constexpr CursorTexts kFirstFromDoc = {"ALA_GetFirstAttrFromDoc",
                                       "record or record->attrValList is NULL or record->numDocAttr < 0 in "
                                       "ALA_GetFirstAttrFromDoc; ALA_A_INVALID_RECORD"};
constexpr CursorTexts kNextFromDoc = {"ALA_GetNextAttrFromDoc",
                                      "record or record->attrValList is NULL or record->numDocAttr < 0 in "
                                      "ALA_GetNextAttrFromDoc; ALA_A_INVALID_RECORD"};

// What all four do: the checks, the move of the cursor, and the delivery of the node that it moved to.
template <class Record, class Move>
static ALA_retCode_t moveAndDeliver(ALA_handle_t in_handle, Record **inoutp_curRecord, const char *inp_locale,
                                    const CursorTexts &in_texts, ALA_attrPair **outp_attribute,
                                    Move in_move) {
    *outp_attribute = nullptr;
    ALA_retCode_t result = ALA__CheckRecord(in_handle, inoutp_curRecord, in_texts);
    if (result == ALA_N_NORMAL)
        result = in_move(*inoutp_curRecord);
    if (result == ALA_N_NORMAL)
        result = deliverAtIndex(in_handle, *inoutp_curRecord, inp_locale, in_texts, outp_attribute);
    return result;
}

// Moves to the next node if the cursor was started and there is one.
template <class Record>
static bool advance(Record *inoutp_record, std::uint32_t in_count) {
    // Past the end the index stops rising where it could wrap.
    if (inoutp_record->curAttr == nullptr || inoutp_record->index == UINT32_MAX)
        return false;
    return ++inoutp_record->index < in_count;
}

static ALA_retCode_t moveToFirst(record *inoutp_job) {
    inoutp_job->curAttr = inoutp_job->attrValList;
    inoutp_job->index = 0;
    inoutp_job->docIndex = 0;
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToNext(record *inoutp_job) {
    if (!advance(inoutp_job, inoutp_job->numAttr))
        return ALA_FAIL(ALA_A_LAST_ATTRIBUTE,
                        "record->curAttr is NULL or (++(record->index)>=record->numAttr) in "
                        "ALA_GetNextAttrFromJob; ALA_A_LAST_ATTRIBUTE");
    if (inoutp_job->index >= inoutp_job->numJobAttr)
        return ALA_FAIL(ALA_A_NO_MORE_JOB_ATTR,
                        "record->index>=record->numJobAttr in ALA_GetNextAttrFromJob; "
                        "ALA_A_NO_MORE_JOB_ATTR");
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToFirst(docRecord *inoutp_document) {
    inoutp_document->index = 0;
    if (inoutp_document->numDocAttr == 0) {
        ALA_DETAIL("record->numDocAttr is 0 in ALA_GetFirstAttrFromDoc; ALA_A_LAST_ATTRIBUTE");
        return ALA_A_LAST_ATTRIBUTE;
    }
    inoutp_document->curAttr = inoutp_document->attrValList;
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToNext(docRecord *inoutp_document) {
    if (advance(inoutp_document, inoutp_document->numDocAttr))
        return ALA_N_NORMAL;
    ALA_DETAIL(
        "record->curAttr is NULL or (++(record->index)>=record->numDocAttr) in ALA_GetNextAttrFromDoc; "
        "ALA_A_LAST_ATTRIBUTE");
    return ALA_A_LAST_ATTRIBUTE;
}

ALA_retCode_t ALA_GetFirstAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kFirstFromJob.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kFirstFromJob, outp_attribute,
                          [](record *inoutp_record) { return moveToFirst(inoutp_record); });
}

ALA_retCode_t ALA_GetNextAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kNextFromJob.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kNextFromJob, outp_attribute,
                          [](record *inoutp_record) { return moveToNext(inoutp_record); });
}

ALA_retCode_t ALA_GetFirstAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kFirstFromDoc.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kFirstFromDoc, outp_attribute,
                          [](docRecord *inoutp_record) { return moveToFirst(inoutp_record); });
}

ALA_retCode_t ALA_GetNextAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kNextFromDoc.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kNextFromDoc, outp_attribute,
                          [](docRecord *inoutp_record) { return moveToNext(inoutp_record); });
}
