// Lists the names of a record's attributes.
#include "ala/cursor/attributes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/driver/names.h"
#include "ala/render/name_lookup.h"

using namespace qvledger;

namespace {

struct NodeRange {
    std::uint64_t first;
    std::uint64_t end; // the range does not include this node
};

// Builds a list of names in one block: the nodes in the order of the list, then the texts.  The block begins
// with the first node, so a single free releases the whole list.
class NameBlock {
public:
    explicit NameBlock(std::size_t count) : count_(count), free_(count) {}

    // Adds a copy of a name at the front of the list.  name: in a buffer of at least kUsualName bytes (see
    // copyName).  False when memory runs out.
    bool add(const char *name, std::size_t length) {
        const std::size_t room = std::max(length + 1, kUsualName);
        if (used_ + room > capacity_ && !grow(used_ + room))
            return false;
        char *text = block_.get() + used_;
        copyName(name, length, text);
        used_ += length + 1;
        --free_;
        nodes()[free_] = {text, free_ + 1 < count_ ? &nodes()[free_ + 1] : nullptr};
        return true;
    }

    // Returns the list, to be released with free.  REQUIRES: count names have been added.
    ALA_attrName *release() { return reinterpret_cast<ALA_attrName *>(block_.release()); }

private:
    ALA_attrName *nodes() { return reinterpret_cast<ALA_attrName *>(block_.get()); }

    [[gnu::noinline]] bool grow(std::size_t size) { // inlined, it would slow down add()
        const std::size_t texts = count_ * sizeof(ALA_attrName);
        const std::size_t wanted = std::max({size, texts + count_ * kUsualName, 2 * capacity_});
        Malloced<char> grown(static_cast<char *>(std::malloc(wanted)));
        if (grown == nullptr)
            return false;
        NameBlock larger(count_);
        larger.capacity_ = wanted;
        larger.block_ = std::move(grown);
        for (std::size_t i = count_; i-- > free_;)
            larger.add(nodes()[i].attrNameStr, std::strlen(nodes()[i].attrNameStr));
        std::swap(*this, larger);
        return true;
    }

    std::size_t count_;
    std::size_t free_; // number of unused nodes, at the start of the block
    std::size_t used_ = count_ * sizeof(ALA_attrName);
    std::size_t capacity_ = 0;
    Malloced<char> block_;
};

} // namespace

// Sets *range to those nodes of the record that the type selects.  False for an unknown type.
static bool selectRange(const record &jobRecord, ALA_recAttrType_t type, NodeRange *range) {
    const std::uint64_t job = jobRecord.numJobAttr;
    const std::uint64_t document = job + jobRecord.docAttrPerDoc;
    switch (type) {
    case ALA_JOB_AND_DOCUMENT_ATTRIBUTES:
        *range = {0, document};
        break;
    case ALA_JOB_ATTRIBUTES:
        *range = {0, job};
        break;
    case ALA_DOCUMENT_ATTRIBUTES:
        *range = {job, document};
        break;
    default:
        return false;
    }
    range->end = std::min<std::uint64_t>(range->end, jobRecord.numAttr);
    return true;
}

static ALA_retCode_t setLocale(STF_l__hdr *status, ALA_handle_t handle, const char *wanted,
                               const record &jobRecord) {
    char *locale = const_cast<char *>(wanted);
    const std::int32_t result = OID_SetLocale(status, &handle->oidHandle, &locale);
    if (result == 0)
        return ALA_N_NORMAL;
    return ALA_FAIL(
        ALA_A_OID_ERROR,
        "OID_SetLocale failed for locale %s in ALA_ListAttributesFromRecord; oid status = 0x%X; decoid "
        "= %s; ALA_A_OID_ERROR",
        wanted, static_cast<unsigned>(result), jobRecord.attrValList->decoid);
}

// Looks up an attribute's name in the OID database and caches the name.  Returns 0, or the error of an OID_
// function.
static std::int32_t lookUpName(STF_l__hdr *status, ALA_handle_t handle, std::uint32_t place,
                               attrValNode *node, char *name) {
    std::int32_t result = fillOid(status, node);
    if (result == 0)
        result = OID_LookupBinary(status, handle->oidHandle, node->oid, name, 0);
    if (result == 0)
        handle->columns.remember(place, node->decoid, name);
    return result;
}

static ALA_retCode_t addName(STF_l__hdr *status, ALA_handle_t handle, const record &job, std::uint32_t place,
                             NameBlock &names) {
    attrValNode *node = &job.attrValList[place];
    bool added = false;
    const std::string_view known = handle->columns.recall(place, node->decoid);
    if (known.data() != nullptr) {
        added = names.add(known.data(), known.size());
    } else {
        char name[OID_NAME_SIZE];
        const std::int32_t result = lookUpName(status, handle, place, node, name);
        if (result != 0) {
            node->oid = nullptr;
            return ALA_FAIL(
                ALA_A_OID_ERROR,
                "OID_ConvertDecToBin or OID_LookupBinary failed in ALA_ListAttributesFromRecord; oid "
                "status = 0x%X; decoid = %s; ALA_A_OID_ERROR",
                static_cast<unsigned>(result), node->decoid);
        }
        added = names.add(name, std::strlen(name));
    }
    if (!added)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for attrName in "
                                             "ALA_ListAttributesFromRecord; ALA_A_OUT_OF_MEMORY");
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_ListAttributesFromRecord(ALA_handle_t in_alaHandle, ALA_record_t in_curRecord,
                                           ALA_recAttrType_t in_attrType, const char *inp_locale,
                                           ALA_attrName **outp_attributeNames) {
    const FuncTrace trace("ALA_ListAttributesFromRecord");
    *outp_attributeNames = nullptr;
    if (const ALA_retCode_t valid = checkHandle(in_alaHandle, "ALA_ListAttributesFromRecord");
        valid != ALA_N_NORMAL)
        return valid;
    if (in_curRecord == nullptr || in_curRecord->attrValList == nullptr)
        return ALA_FAIL(ALA_A_INVALID_JOB_RECORD,
                        "record or record->attrValList is NULL or record->numAttr < 0 in "
                        "ALA_ListAttributesFromRecord; ALA_A_INVALID_JOB_RECORD");
    NodeRange range = {};
    if (!selectRange(*in_curRecord, in_attrType, &range))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR,
                        "Unknown attribute type: %d in ALA_ListAttributesFromRecord; ALA_A_UNKNOWN_ERR",
                        in_attrType);
    const StatusList status;
    if (inp_locale != nullptr) {
        in_alaHandle->columns.forget();
        if (const ALA_retCode_t result = setLocale(status, in_alaHandle, inp_locale, *in_curRecord);
            result != ALA_N_NORMAL)
            return result;
    }
    if (range.first >= range.end)
        return ALA_N_NORMAL;
    NameBlock names(range.end - range.first);
    for (std::uint64_t i = range.first; i < range.end; ++i)
        if (const ALA_retCode_t result =
                addName(status, in_alaHandle, *in_curRecord, static_cast<std::uint32_t>(i), names);
            result != ALA_N_NORMAL)
            return result;
    *outp_attributeNames = names.release();
    return ALA_N_NORMAL;
}

std::uint64_t qvledger::namesState(ALA_handle_t handle, ALA_record_t jobRecord, ALA_recAttrType_t type) {
    NodeRange range = {};
    if (!selectRange(*jobRecord, type, &range))
        return 0;
    for (std::uint64_t i = range.first; i < range.end; ++i)
        if (handle->columns.recall(static_cast<std::uint32_t>(i), jobRecord->attrValList[i].decoid).data() ==
            nullptr)
            return 0;
    return jobRecord->names = handle->columns.stateOf(range.first, range.end);
}

ALA_retCode_t ALA_FreeAttributeList(ALA_attrName **inoutp_attributeNames) {
    const FuncTrace trace("ALA_FreeAttributeList");
    std::free(*inoutp_attributeNames); // all nodes and texts are in one block (NameBlock)
    *inoutp_attributeNames = nullptr;
    return ALA_N_NORMAL;
}
