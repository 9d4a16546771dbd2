// The cursors over the attributes of a job and of a document.
#include "ala/cursor/attributes.h"

#include <algorithm>

#include "ala/base/trace.h"
#include "ala/driver/names.h"
#include "ala/render/pair.h"

using namespace qvledger;

namespace {

// The arguments of Columns::recall for an attribute: the place, and the result of stateOf for the record's
// names.
struct Place {
    std::uint32_t number;
    std::uint64_t names;
};

} // namespace

static Place placeOf(const record &job) {
    return {job.index, job.names};
}
static Place placeOf(const docRecord &document) {
    return {document.firstPlace + document.index, 0};
}

std::int32_t qvledger::fillOid(STF_l__hdr *status, attrValNode *node) {
    const std::int32_t result = OID_ConvertDecToBin(status, node->decoid, node->oidBytes, 0);
    node->oid = result == 0 ? node->oidBytes : nullptr;
    return result;
}

// Renders a value and adds its text to the pair.  packed: empty for an attribute without values.  name: null
// data if the attribute's name is not cached.  Returns the codes of getAttribute, or ALA_A_ODPUNPACK_ERROR if
// the value cannot be unpacked.
static ALA_retCode_t deliverValue(const RenderContext &context, const attrValNode &node,
                                  const GEN_string &packed, std::string_view name, const char *locale,
                                  ALA_attrPair **attribute) {
    if (name.data() != nullptr)
        return getPackedAttribute(node, {packed._value, static_cast<std::size_t>(packed.length)}, name,
                                  context, attribute);
    const StatusList status;
    void *value = nullptr;
    AS_attrValDesc_t description = {};
    if (packed.length != 0 &&
        ODP_UnpackAV(status, packed.length, packed._value, node.attrValType, &value, &description) != 0)
        return ALA_A_ODPUNPACK_ERROR;
    return getAttribute(node, value, description, locale, context, attribute);
}

// Renders all values of an attribute.  Sets *complete and returns the result of the last value; failures of
// earlier values are counted in valuesSkipped, but not returned.  If the object identifier is malformed or a
// value cannot be unpacked, stops there, returns the error and does not change *complete.
static ALA_retCode_t deliverAttribute(ALA_handle_t handle, attrValNode *node, Place place, const char *locale,
                                      const CursorTexts &texts, ALA_attrPair **attribute, bool *complete) {
    if (locale != nullptr)
        handle->columns.forget();
    const std::string_view name = handle->columns.recall(place.number, node->decoid, place.names);
    if (name.data() == nullptr) {
        const StatusList status;
        if (const std::int32_t failure = fillOid(status, node); failure != 0) {
            ++handle->valuesSkipped;
            return ALA_FAIL(
                ALA_A_OID_ERROR,
                "OID_ConvertDecToBin failed in %s; oid status = 0x%X; decoid = %s; ALA_A_OID_ERROR",
                texts.operation, static_cast<unsigned>(failure), node->decoid);
        }
    }
    const RenderContext context = {&handle->oidHandle, handle->timeForm, &handle->plainDays};
    ALA_retCode_t result = ALA_N_NORMAL;
    const std::uint32_t count = std::max(node->numAttrVal, 1U);
    for (std::uint32_t i = 0; i < count; ++i) {
        const GEN_string packed = node->numAttrVal != 0 ? node->attrVals[i] : GEN_string{};
        result = deliverValue(context, *node, packed, name, locale, attribute);
        if (result != ALA_N_NORMAL)
            ++handle->valuesSkipped;
        if (result == ALA_A_ODPUNPACK_ERROR)
            break;
    }
    if (name.data() == nullptr && locale == nullptr && *attribute != nullptr)
        handle->columns.remember(place.number, node->decoid, (*attribute)->attrName);
    if (result == ALA_A_ODPUNPACK_ERROR)
        return ALA_FAIL(result, "ODP_UnpackAV failed for attr val type %d in %s; ALA_A_ODPUNPACK_ERROR",
                        static_cast<std::int32_t>(node->attrValType), texts.operation);
    *complete = true;
    return result;
}

std::uint64_t qvledger::valuesSkipped(ALA_handle_t handle) {
    return handle->valuesSkipped;
}

std::string_view qvledger::valueText(const attributeVal &value) {
    return {value.value, reinterpret_cast<const ValueBlock &>(value).size};
}

template <class Record>
ALA_retCode_t qvledger::checkRecord(ALA_handle_t handle, Record **curRecord, const CursorTexts &texts) {
    if (const ALA_retCode_t valid = checkHandle(handle, texts.operation); valid != ALA_N_NORMAL)
        return valid;
    if (curRecord == nullptr)
        return ALA_FAIL(ALA_A_INVALID_RECORD, "inoutp_curRecord is NULL in %s; ALA_A_INVALID_RECORD",
                        texts.operation);
    if (*curRecord == nullptr || (*curRecord)->attrValList == nullptr)
        return ALA_FAIL(ALA_A_INVALID_RECORD, "%s", texts.invalidRecord);
    return ALA_N_NORMAL;
}
template ALA_retCode_t qvledger::checkRecord(ALA_handle_t, record **, const CursorTexts &);
template ALA_retCode_t qvledger::checkRecord(ALA_handle_t, docRecord **, const CursorTexts &);

// Renders the node at the cursor's index.  If the rendering is complete, the node becomes curAttr.
template <class Record>
static ALA_retCode_t deliverAtIndex(ALA_handle_t handle, Record *record, const char *locale,
                                    const CursorTexts &texts, ALA_attrPair **attribute) {
    attrValNode *node = record->attrValList + record->index;
    bool complete = false;
    const ALA_retCode_t result =
        deliverAttribute(handle, node, placeOf(*record), locale, texts, attribute, &complete);
    if (complete)
        record->curAttr = node;
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

// The common part of the four cursor operations: checks the arguments, moves the cursor, and renders the node
// at its new position.
template <class Record, class Move>
static ALA_retCode_t moveAndDeliver(ALA_handle_t handle, Record **curRecord, const char *locale,
                                    const CursorTexts &texts, ALA_attrPair **attribute, Move move) {
    *attribute = nullptr;
    ALA_retCode_t result = checkRecord(handle, curRecord, texts);
    if (result == ALA_N_NORMAL)
        result = move(*curRecord);
    if (result == ALA_N_NORMAL)
        result = deliverAtIndex(handle, *curRecord, locale, texts, attribute);
    return result;
}

// Moves the cursor to the next node.  False if there is no next node or the cursor was not started.
template <class Record>
static bool advance(Record *record, std::uint32_t count) {
    // Calls past the end increase the index, too, but the index must not overflow.
    if (record->curAttr == nullptr || record->index == UINT32_MAX)
        return false;
    return ++record->index < count;
}

static ALA_retCode_t moveToFirst(record *job) {
    job->curAttr = job->attrValList;
    job->index = 0;
    job->docIndex = 0;
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToNext(record *job) {
    if (!advance(job, job->numAttr))
        return ALA_EXPECTED(ALA_A_LAST_ATTRIBUTE,
                            "record->curAttr is NULL or (++(record->index)>=record->numAttr) in "
                            "ALA_GetNextAttrFromJob; ALA_A_LAST_ATTRIBUTE");
    if (job->index >= job->numJobAttr)
        return ALA_EXPECTED(ALA_A_NO_MORE_JOB_ATTR,
                            "record->index>=record->numJobAttr in ALA_GetNextAttrFromJob; "
                            "ALA_A_NO_MORE_JOB_ATTR");
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToFirst(docRecord *document) {
    document->index = 0;
    if (document->numDocAttr == 0) {
        ALA_DETAIL("record->numDocAttr is 0 in ALA_GetFirstAttrFromDoc; ALA_A_LAST_ATTRIBUTE");
        return ALA_A_LAST_ATTRIBUTE;
    }
    document->curAttr = document->attrValList;
    return ALA_N_NORMAL;
}

static ALA_retCode_t moveToNext(docRecord *document) {
    if (advance(document, document->numDocAttr))
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
                          [](record *jobRecord) { return moveToFirst(jobRecord); });
}

ALA_retCode_t ALA_GetNextAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kNextFromJob.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kNextFromJob, outp_attribute,
                          [](record *jobRecord) { return moveToNext(jobRecord); });
}

ALA_retCode_t ALA_GetFirstAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kFirstFromDoc.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kFirstFromDoc, outp_attribute,
                          [](docRecord *record) { return moveToFirst(record); });
}

ALA_retCode_t ALA_GetNextAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute) {
    const FuncTrace trace(kNextFromDoc.operation);
    return moveAndDeliver(in_alaHandle, inoutp_curRecord, inp_locale, kNextFromDoc, outp_attribute,
                          [](docRecord *record) { return moveToNext(record); });
}
