#include "ala/render/dispatcher.h"

#include <cstring>
#include <utility>

#include "ala/base/trace.h"
#include "ala/render/name_lookup.h"
#include "ala/render/pair.h"
#include "ala/render/value_types.h"
#include "service/status.h"

using namespace qvledger;

void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc) {
    if (in_attr == nullptr)
        return;
    const StatusList status;
    in_valDesc.deleteFunc(status, in_attr, nullptr);
}

namespace {

// The value record, released on whichever road the operation ends.
class ValueRecord {
public:
    ValueRecord(void *givenValue, AS_attrValDesc_t givenDescription)
        : value(givenValue), description(givenDescription) {}
    ~ValueRecord() { ALA__Cleanup(value, description); }
    ValueRecord(const ValueRecord &) = delete;
    ValueRecord &operator=(const ValueRecord &) = delete;
    const void *get() const { return value; }

private:
    void *value;
    AS_attrValDesc_t description;
};

} // namespace

static ALA__growingPair *asGrowing(ALA_attrPair *pair) {
    return reinterpret_cast<ALA__growingPair *>(pair);
}

// Renders into the target at the link.  The text that the value has reached stays there, also on failure: in
// a further value it is given a node without room, in the target's place.
template <bool kFurther>
static const RenderFailure *renderTarget(AS_attrValType_t type, const void *value, const char *locale,
                                         ALA_timeForm_t timeForm, void **oidHandle, const ALA_attrPair *pair,
                                         attributeVal **link) {
    static constexpr RenderFailure kNoMemoryForText = {
        ALA_A_OUT_OF_MEMORY, "Could not allocate memory for the value of oid: %s in ALA__GetAttribute"};
    static constexpr RenderFailure kNoNode = {ALA_A_OUT_OF_MEMORY,
                                              "ALA__AllocValue failed for oid: %s in ALA__GetAttribute"};
    const StatusList status;
    attributeVal *target = *link;
    Rendering rendering = {status, oidHandle, locale, timeForm, Text(target->value, kValueSize), pair, link};
    const RenderRow *row = value != nullptr ? findRenderRow(type) : nullptr;
    const RenderFailure *failure = row != nullptr ? row->render(rendering, value) : nullptr;
    if constexpr (!kFurther)
        target->value = rendering.text.release();
    else if (*link == target && ALA__AllocValue(link, rendering.text) != ALA_N_NORMAL)
        return failure != nullptr ? failure : &kNoNode;
    if (failure == nullptr && rendering.text.failed())
        return &kNoMemoryForText;
    return failure;
}

// Makes the pair of a first value.
static ALA_retCode_t makePair(const attrValNode *node, std::string_view knownName, const char *locale,
                              void **oidHandle, OwnedPair &givenPair) {
    ALA_attrPair *pair = nullptr;
    char *attrName = nullptr;
    const ALA_retCode_t result =
        ALA__LookupAttrNameFromOID(node->oid, knownName, locale, oidHandle, &pair, &attrName);
    if (result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__LookupAttrNameFromOID failed for oid: %s in ALA__GetAttribute",
                        node->decoid);
    pair->attrName = attrName; // which is a part of the pair
    givenPair.reset(asGrowing(pair));
    givenPair->type = node->attrValType;
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__GetNamedAttribute(const attrValNode *inp_node, std::string_view in_knownName,
                                     void *in_attrVal, AS_attrValDesc_t in_attrValDesc,
                                     const char *inp_locale, ALA_timeForm_t in_timeForm,
                                     void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute) {
    const FuncTrace trace("ALA__GetAttribute");
    ALA_DETAIL("*** ALA__GetAttribute *** for attribute type %d ",
               static_cast<std::int32_t>(inp_node->attrValType));
    const ValueRecord value(in_attrVal, in_attrValDesc);
    OwnedPair made;
    if (*inoutp_attribute == nullptr)
        if (const ALA_retCode_t result = makePair(inp_node, in_knownName, inp_locale, inoutp_oidHandle, made);
            result != ALA_N_NORMAL)
            return result;
    ALA__growingPair *pair = made != nullptr ? made.get() : asGrowing(*inoutp_attribute);
    attributeVal **link = &pair->pair.attrVal;
    const RenderFailure *failure = nullptr;
    if (made != nullptr) {
        failure = renderTarget<false>(inp_node->attrValType, value.get(), inp_locale, in_timeForm,
                                      inoutp_oidHandle, &pair->pair, link);
    } else {
        ALA__roomyValue roomy;
        roomy.node.value = roomy.text;
        link = &pair->last->next;
        *link = &roomy.node;
        failure = renderTarget<true>(inp_node->attrValType, value.get(), inp_locale, in_timeForm,
                                     inoutp_oidHandle, &pair->pair, link);
    }
    if (*link != &pair->first.node)
        for (attributeVal *last = *link; last != nullptr; last = last->next)
            pair->last = last;
    if (failure != nullptr)
        return ALA_FAIL(failure->code, failure->message, inp_node->decoid);
    if (made != nullptr)
        *inoutp_attribute = &made.release()->pair;
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute) {
    return ALA__GetNamedAttribute(inp_node, {}, in_attrVal, in_attrValDesc, inp_locale, ALA_TIME_AS_REPORTED,
                                  inoutp_oidHandle, inoutp_attribute);
}

ALA_retCode_t ALA_GetAttributeType(const ALA_attrPair *inp_attribute, uint32_t *outp_valueType,
                                   ALA_valueKind_t *outp_kind) {
    if (inp_attribute == nullptr || outp_valueType == nullptr || outp_kind == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "an address is NULL in ALA_GetAttributeType; ALA_A_INVALID_ARG");
    *outp_valueType = reinterpret_cast<const ALA__growingPair *>(inp_attribute)->type;
    const RenderRow *row = findRenderRow(*outp_valueType);
    *outp_kind = row != nullptr ? row->kind : ALA_KIND_TEXT;
    return ALA_N_NORMAL;
}
