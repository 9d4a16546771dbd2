// The names of a record's attributes.
#include "ala/cursor/cursor.h"

#include <algorithm>
#include <cstring>

#include "ala/cursor/columns.h"
#include "ala/owners.h"
#include "ala/trace.h"

namespace {

struct NamesDeleter {
    void operator()(ALA_attrName *inp_names) const { ALA_FreeAttributeList(&inp_names); }
};
using NameList = std::unique_ptr<ALA_attrName, NamesDeleter>;

struct Range {
    std::uint64_t first;
    std::uint64_t end; // not included
};

} // namespace

// The nodes that the type selects, as far as the record has them.  False for an unknown type.
static bool selectRange(const record &in_record, ALA_recAttrType_t in_type, Range *outp_range) {
    const std::uint64_t job = in_record.numJobAttr;
    const std::uint64_t document = job + in_record.docAttrPerDoc;
    switch (in_type) {
    case ALA_JOB_AND_DOCUMENT_ATTRIBUTES:
        *outp_range = {0, document};
        break;
    case ALA_JOB_ATTRIBUTES:
        *outp_range = {0, job};
        break;
    case ALA_DOCUMENT_ATTRIBUTES:
        *outp_range = {job, document};
        break;
    default:
        return false;
    }
    outp_range->end = std::min<std::uint64_t>(outp_range->end, in_record.numAttr);
    return true;
}

static ALA_retCode_t setLocale(STF_l__hdr *in_status, ALA_handle_t in_handle, const char *inp_locale,
                               const record &in_record) {
    char *locale = const_cast<char *>(inp_locale);
    const std::int32_t result = OID_SetLocale(in_status, &in_handle->oidHandle, &locale);
    if (result == 0)
        return ALA_N_NORMAL;
    return ALA_FAIL(
        ALA_A_OID_ERROR,
        "OID_SetLocale failed for locale %s in ALA_ListAttributesFromRecord; oid status = 0x%X; decoid "
        "= %s; ALA_A_OID_ERROR",
        inp_locale, static_cast<unsigned>(result), in_record.attrValList->decoid);
}

// The attribute's name into a buffer of OID_NAME_SIZE bytes.  0, or the failure of the OID database.
static std::int32_t lookUpName(STF_l__hdr *in_status, ALA_handle_t in_handle, attrValNode *inoutp_node,
                               char *outp_name) {
    const ALA__column *column = ALA__RecallColumn(in_handle, *inoutp_node);
    std::int32_t result = ALA__FillOid(in_status, column, inoutp_node);
    if (column != nullptr) {
        std::memcpy(outp_name, column->name, std::strlen(column->name) + 1);
        return 0;
    }
    if (result == 0)
        result = OID_LookupBinary(in_status, in_handle->oidHandle, inoutp_node->oid, outp_name, 0);
    if (result == 0)
        ALA__RememberColumn(in_handle, *inoutp_node, outp_name);
    return result;
}

// Puts one name at the head of the list.
static ALA_retCode_t addName(STF_l__hdr *in_status, ALA_handle_t in_handle, attrValNode *inoutp_node,
                             NameList &inoutp_names) {
    char name[OID_NAME_SIZE];
    if (const std::int32_t result = lookUpName(in_status, in_handle, inoutp_node, name); result != 0) {
        inoutp_node->oid = nullptr;
        return ALA_FAIL(
            ALA_A_OID_ERROR,
            "OID_ConvertDecToBin or OID_LookupBinary failed in ALA_ListAttributesFromRecord; oid status "
            "= 0x%X; decoid = %s; ALA_A_OID_ERROR",
            static_cast<unsigned>(result), inoutp_node->decoid);
    }
    Malloced<char> text(_strdup(name));
    if (text == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for attrName in "
                                             "ALA_ListAttributesFromRecord; ALA_A_OUT_OF_MEMORY");
    Malloced<ALA_attrName> node = makeZeroed<ALA_attrName>();
    if (node == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for attrNameNode in "
                                             "ALA_ListAttributesFromRecord; ALA_A_OUT_OF_MEMORY");
    *node = {text.release(), inoutp_names.release()};
    inoutp_names.reset(node.release());
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_ListAttributesFromRecord(ALA_handle_t in_alaHandle, ALA_record_t in_curRecord,
                                           ALA_recAttrType_t in_attrType, const char *inp_locale,
                                           ALA_attrName **outp_attributeNames) {
    const FuncTrace trace("ALA_ListAttributesFromRecord");
    *outp_attributeNames = nullptr;
    if (const ALA_retCode_t valid = ALA__CheckHandle(in_alaHandle, "ALA_ListAttributesFromRecord");
        valid != ALA_N_NORMAL)
        return valid;
    if (in_curRecord == nullptr || in_curRecord->attrValList == nullptr)
        return ALA_FAIL(ALA_A_INVALID_JOB_RECORD,
                        "record or record->attrValList is NULL or record->numAttr < 0 in "
                        "ALA_ListAttributesFromRecord; ALA_A_INVALID_JOB_RECORD");
    Range range = {};
    if (!selectRange(*in_curRecord, in_attrType, &range))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR,
                        "Unknown attribute type: %d in ALA_ListAttributesFromRecord; ALA_A_UNKNOWN_ERR",
                        in_attrType);
    const StatusList status;
    if (inp_locale != nullptr) {
        ALA__ForgetColumns(in_alaHandle);
        if (const ALA_retCode_t result = setLocale(status, in_alaHandle, inp_locale, *in_curRecord);
            result != ALA_N_NORMAL)
            return result;
    }
    NameList names;
    for (std::uint64_t i = range.first; i < range.end; ++i)
        if (const ALA_retCode_t result = addName(status, in_alaHandle, &in_curRecord->attrValList[i], names);
            result != ALA_N_NORMAL)
            return result;
    *outp_attributeNames = names.release();
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_FreeAttributeList(ALA_attrName **inoutp_attributeNames) {
    const FuncTrace trace("ALA_FreeAttributeList");
    while (*inoutp_attributeNames != nullptr) {
        ALA_attrName *node = *inoutp_attributeNames;
        *inoutp_attributeNames = node->next;
        std::free(node->attrNameStr);
        std::free(node);
    }
    return ALA_N_NORMAL;
}
