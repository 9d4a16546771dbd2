#include "ala/render/render.h"

#include <utility>

#include "ala/render/names.h"
#include "ala/trace.h"
#include "service/status.h"

ALA_retCode_t ALA__AllocValue(attributeVal **inoutpp_val) {
    *inoutpp_val = nullptr;
    auto *value = static_cast<ALA__roomyValue *>(std::malloc(sizeof(ALA__roomyValue)));
    if (value == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Return code for ALA__AllocValue is ALA_A_OUT_OF_MEMORY");
    value->text[0] = '\0';
    value->node = {value->text, nullptr};
    *inoutpp_val = &value->node;
    return ALA_N_NORMAL;
}

void ALA__FreeValue(const ALA_attrPair *inp_pair, attributeVal *inp_value) {
    if (inp_value->value != reinterpret_cast<const ALA__roomyValue *>(inp_value)->text)
        std::free(inp_value->value);
    if (inp_value != &reinterpret_cast<const ALA__growingPair *>(inp_pair)->first.node)
        std::free(inp_value);
}

ALA_retCode_t ALA_FreeAttributePair(ALA_attrPair **inoutp_attribute) {
    const FuncTrace trace("ALA_FreeAttributePair");
    ALA_attrPair *pair = *inoutp_attribute;
    while (pair->attrVal != nullptr) {
        attributeVal *value = pair->attrVal;
        pair->attrVal = value->next;
        ALA__FreeValue(pair, value);
    }
    PairMemory::release(pair); // with its name
    *inoutp_attribute = nullptr;
    return ALA_N_NORMAL;
}

void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc) {
    if (in_attr == nullptr)
        return;
    const StatusList status;
    in_valDesc.deleteFunc(status, in_attr, nullptr);
}

void Rendering::dropTarget() {
    text.replace(nullptr);
    ALA__FreeValue(pair, *link);
    *link = nullptr;
}

namespace {

// The value record, released on whichever road the operation ends.
class ValueRecord {
public:
    ValueRecord(void *in_value, AS_attrValDesc_t in_description)
        : value(in_value), description(in_description) {}
    ~ValueRecord() { ALA__Cleanup(value, description); }
    ValueRecord(const ValueRecord &) = delete;
    ValueRecord &operator=(const ValueRecord &) = delete;
    const void *get() const { return value; }

private:
    void *value;
    AS_attrValDesc_t description;
};

struct PairDeleter {
    void operator()(ALA__growingPair *inp_pair) const {
        ALA_attrPair *pair = &inp_pair->pair;
        ALA_FreeAttributePair(&pair);
    }
};
using OwnedPair = std::unique_ptr<ALA__growingPair, PairDeleter>;

} // namespace

static ALA__growingPair *asGrowing(ALA_attrPair *inp_pair) {
    return reinterpret_cast<ALA__growingPair *>(inp_pair);
}

// Renders into the target at the link.  The text that the value has reached stays there, also on failure.
static const RenderFailure *renderTarget(AS_attrValType_t in_type, const void *inp_value,
                                         const char *inp_locale, void **in_oidHandle,
                                         const ALA_attrPair *inp_pair, attributeVal **inoutp_link) {
    static constexpr RenderFailure kNoMemoryForText = {
        ALA_A_OUT_OF_MEMORY, "Could not allocate memory for the value of oid: %s in ALA__GetAttribute"};
    const RenderRow *row = findRenderRow(in_type);
    if (row == nullptr)
        return nullptr;
    const StatusList status;
    attributeVal *target = *inoutp_link;
    Rendering rendering = {status,   in_oidHandle, inp_locale, Text(target->value, kValueSize),
                           inp_pair, inoutp_link};
    const RenderFailure *failure = row->render(rendering, inp_value);
    if (*inoutp_link == target)
        target->value = rendering.text.release();
    if (failure == nullptr && rendering.text.failed())
        return &kNoMemoryForText;
    return failure;
}

// Makes the pair of a first value.
static ALA_retCode_t makePair(const attrValNode *inp_node, const char *inp_locale, void **inoutp_oidHandle,
                              OwnedPair &outp_pair) {
    ALA_attrPair *pair = nullptr;
    char *attrName = nullptr;
    const ALA_retCode_t result =
        ALA__LookupAttrNameFromOID(inp_node, inp_locale, inoutp_oidHandle, &pair, &attrName);
    if (result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__LookupAttrNameFromOID failed for oid: %s in ALA__GetAttribute",
                        inp_node->decoid);
    pair->attrName = attrName; // which is a part of the pair
    outp_pair.reset(asGrowing(pair));
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute) {
    const FuncTrace trace("ALA__GetAttribute");
    ALA_DETAIL("*** ALA__GetAttribute *** for attribute type %d ",
               static_cast<std::int32_t>(inp_node->attrValType));
    const ValueRecord value(in_attrVal, in_attrValDesc);
    OwnedPair made;
    if (*inoutp_attribute == nullptr)
        if (const ALA_retCode_t result = makePair(inp_node, inp_locale, inoutp_oidHandle, made);
            result != ALA_N_NORMAL)
            return result;
    ALA__growingPair *pair = made != nullptr ? made.get() : asGrowing(*inoutp_attribute);
    attributeVal **link = &pair->pair.attrVal;
    if (made == nullptr) {
        link = pair->last != nullptr ? &pair->last->next : link;
        if (const ALA_retCode_t result = ALA__AllocValue(link); result != ALA_N_NORMAL)
            return ALA_FAIL(result, "ALA__AllocValue failed for oid: %s in ALA__GetAttribute",
                            inp_node->decoid);
    }

    const RenderFailure *failure = nullptr;
    if (value.get() != nullptr)
        failure =
            renderTarget(inp_node->attrValType, value.get(), inp_locale, inoutp_oidHandle, &pair->pair, link);
    for (attributeVal *last = *link; last != nullptr; last = last->next)
        pair->last = last;
    if (failure != nullptr)
        return ALA_FAIL(failure->code, failure->message, inp_node->decoid);
    if (made != nullptr)
        *inoutp_attribute = &made.release()->pair;
    return ALA_N_NORMAL;
}
