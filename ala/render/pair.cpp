#include "ala/render/pair.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "service/thread.h"

using namespace qvledger;

// ---- In memory ----

namespace {

// A pair and its first value.  The attribute's name follows the value's text.
struct PairBlock {
    ALA_attrPair pair;     // the public part; first, so that pair and block have the same address
    AS_attrValType_t type; // type of the values
    bool isUsual;          // the block has kUsualPair bytes and can be reused
    attributeVal *last;
    ValueBlock first;
};

} // namespace

static PairBlock *blockOf(ALA_attrPair *pair) {
    return reinterpret_cast<PairBlock *>(pair);
}

// Each thread keeps one released block for the next pair, because malloc and free for each pair would add
// noticeably to the cost of rendering.
constexpr std::size_t kUsualPair = 512; // bytes
constexpr std::size_t kLongestText = std::numeric_limits<std::uint32_t>::max();
static thread_local PairBlock *spare;
static thread_local bool isSpareWatched; // the spare will be released when the thread ends

static PairBlock *allocatePair(std::size_t size) {
    PairBlock *block = size <= kUsualPair ? std::exchange(spare, nullptr) : nullptr;
    if (block == nullptr)
        block = static_cast<PairBlock *>(std::malloc(std::max(size, kUsualPair)));
    if (block != nullptr)
        block->isUsual = size <= kUsualPair;
    return block;
}

static void releasePair(PairBlock *block) {
    static ThreadsEnd end([](void *) { std::free(std::exchange(spare, nullptr)); });
    if (block->isUsual && spare == nullptr && (isSpareWatched || (isSpareWatched = end.enter(&spare))))
        spare = block;
    else
        std::free(block);
}

static char *putText(char *to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    to[text.size()] = '\0';
    return to + text.size() + 1;
}

// Stores the value and its text.  Returns the address after the text's NUL.
static char *setValue(ValueBlock *value, std::string_view text) {
    char *to = reinterpret_cast<char *>(value) + offsetof(ValueBlock, text);
    value->node = {to, nullptr};
    value->size = static_cast<std::uint32_t>(text.size());
    return putText(to, text);
}

static PairBlock *makePair(std::string_view name, std::string_view text, AS_attrValType_t type) {
    PairBlock *block = text.size() <= kLongestText
                           ? allocatePair(sizeof(PairBlock) + name.size() + text.size() + 2)
                           : nullptr;
    if (block == nullptr)
        return nullptr;
    char *const attrName = setValue(&block->first, text);
    putText(attrName, name);
    block->pair = {attrName, &block->first.node};
    block->last = &block->first.node;
    block->type = type;
    return block;
}

ALA_retCode_t ALA__AllocValue(attributeVal **outpp_val, std::string_view in_text) {
    void *memory =
        in_text.size() <= kLongestText
            ? std::malloc(std::max(sizeof(ValueBlock), offsetof(ValueBlock, text) + in_text.size() + 1))
            : nullptr;
    *outpp_val = static_cast<attributeVal *>(memory);
    if (memory == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Return code for ALA__AllocValue is ALA_A_OUT_OF_MEMORY");
    setValue(static_cast<ValueBlock *>(memory), in_text);
    return ALA_N_NORMAL;
}

static void freeValues(attributeVal *value) {
    while (value != nullptr)
        std::free(std::exchange(value, value->next));
}

ALA_retCode_t ALA_FreeAttributePair(ALA_attrPair **inoutp_attribute) {
    const FuncTrace trace("ALA_FreeAttributePair");
    PairBlock *block = blockOf(std::exchange(*inoutp_attribute, nullptr));
    freeValues(block->first.node.next);
    releasePair(block);
    return ALA_N_NORMAL;
}

// ---- Rendering ----

static const RenderFailure *addValue(std::string_view text, const attrValNode &node, std::string_view name,
                                     ALA_attrPair **pair) {
    static constexpr RenderFailure kNoPair = {
        ALA_A_OUT_OF_MEMORY, "ALA__LookupAttrNameFromOID failed for oid: %s in ALA__GetAttribute"};
    static constexpr RenderFailure kNoNode = {ALA_A_OUT_OF_MEMORY,
                                              "ALA__AllocValue failed for oid: %s in ALA__GetAttribute"};
    PairBlock *block = blockOf(*pair);
    if (block == nullptr) {
        block = makePair(name, text, node.attrValType);
        if (block == nullptr)
            return ALA_FAIL(&kNoPair, "Return code for ALA__LookupAttrNameFromOID is ALA_A_OUT_OF_MEMORY");
        *pair = &block->pair;
        return nullptr;
    }
    if (ALA__AllocValue(&block->last->next, text) != ALA_N_NORMAL)
        return &kNoNode;
    block->last = block->last->next;
    return nullptr;
}

// Adds `count` values, whose texts are separated by NULs in `texts`.  On failure the pair is unchanged.
static const RenderFailure *addValues(std::string_view texts, std::uint32_t count, const attrValNode &node,
                                      std::string_view name, ALA_attrPair **pair) {
    const bool isNew = *pair == nullptr;
    attributeVal *const before = isNew ? nullptr : blockOf(*pair)->last;
    std::string_view left = texts;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string_view text = i + 1 < count ? left.substr(0, left.find('\0')) : left;
        if (const RenderFailure *failure = addValue(text, node, name, pair); failure != nullptr) {
            if (!isNew) {
                freeValues(std::exchange(before->next, nullptr));
                blockOf(*pair)->last = before;
            } else if (*pair != nullptr) {
                ALA_FreeAttributePair(pair);
            }
            return failure;
        }
        left.remove_prefix(std::min(text.size() + 1, left.size()));
    }
    return nullptr;
}

// Adds the rendered text to the pair, and logs a failure.
static ALA_retCode_t deliver(Rendering &rendering, const RenderFailure *rendered, const attrValNode &node,
                             std::string_view name, ALA_attrPair **pair) {
    static constexpr RenderFailure kNoMemoryForText = {
        ALA_A_OUT_OF_MEMORY, "Could not allocate memory for the value of oid: %s in ALA__GetAttribute"};
    const RenderFailure *failure = rendered;
    if (failure == nullptr && rendering.text.failed())
        failure = &kNoMemoryForText;
    if (failure == nullptr || *pair != nullptr) {
        const std::string_view text =
            rendering.view.data() != nullptr ? rendering.view : rendering.text.view();
        const RenderFailure *notAdded = rendering.values == 1
                                            ? addValue(text, node, name, pair)
                                            : addValues(text, rendering.values, node, name, pair);
        if (failure == nullptr)
            failure = notAdded;
    }
    return failure == nullptr ? ALA_N_NORMAL : ALA_FAIL(failure->code, failure->message, node.decoid);
}

static void logType(const attrValNode &node) {
    ALA_DETAIL("*** ALA__GetAttribute *** for attribute type %d ",
               static_cast<std::int32_t>(node.attrValType));
}

ALA_retCode_t qvledger::getPackedAttribute(const attrValNode &node, std::span<const std::uint8_t> packed,
                                           std::string_view name, const RenderContext &context,
                                           ALA_attrPair **pair) {
    Rendering rendering(context);
    const RenderFailure *failure = nullptr;
    const ValueType *row = packed.empty() ? nullptr : findValueType(node.attrValType);
    if (row != nullptr) {
        alignas(std::max_align_t) std::byte room[512];
        ValueMemory memory(room);
        XdrReader in(packed, memory);
        failure = row->form.renderPacked(in, rendering);
        if (failure == &kRefused)
            return failure->code;
    }
    const FuncTrace trace("ALA__GetAttribute");
    logType(node);
    return deliver(rendering, failure, node, name, pair);
}

void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc) {
    if (in_attr == nullptr)
        return;
    const StatusList status;
    in_valDesc.deleteFunc(status, in_attr, nullptr);
}

namespace {

// Owns a value record, and releases it on every path.
class ValueRecord {
public:
    ValueRecord(void *value, AS_attrValDesc_t description) : value_(value), description_(description) {}
    ~ValueRecord() { ALA__Cleanup(value_, description_); }
    ValueRecord(const ValueRecord &) = delete;
    ValueRecord &operator=(const ValueRecord &) = delete;

private:
    void *value_;
    AS_attrValDesc_t description_;
};

} // namespace

ALA_retCode_t qvledger::getAttribute(const attrValNode &node, void *value, AS_attrValDesc_t description,
                                     const char *locale, const RenderContext &context, ALA_attrPair **pair) {
    const FuncTrace trace("ALA__GetAttribute");
    logType(node);
    const ValueRecord owner(value, description);
    char name[OID_NAME_SIZE] = "";
    if (*pair == nullptr)
        if (const ALA_retCode_t result =
                ALA__LookupAttrNameFromOID(node.oid, locale, context.oidHandle, name);
            result != ALA_N_NORMAL)
            return ALA_FAIL(result, "ALA__LookupAttrNameFromOID failed for oid: %s in ALA__GetAttribute",
                            node.decoid);
    Rendering rendering(context);
    const ValueType *row = value != nullptr ? findValueType(node.attrValType) : nullptr;
    const RenderFailure *failure = row != nullptr ? row->form.render(rendering, value) : nullptr;
    return deliver(rendering, failure, node, name, pair);
}

ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute) {
    return getAttribute(*inp_node, in_attrVal, in_attrValDesc, inp_locale, {.oidHandle = inoutp_oidHandle},
                        inoutp_attribute);
}

ALA_retCode_t ALA__LookupAttrNameFromOID(const std::uint8_t *in_oid, const char *inp_locale,
                                         void **inoutp_oidHandle, char (&outp_attrName)[OID_NAME_SIZE]) {
    const StatusList status;
    std::int32_t result = 0;
    if (inp_locale != nullptr) {
        const Malloced<char> copy(_strdup(inp_locale));
        if (copy == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                            "Return code for ALA__LookupAttrNameFromOID is ALA_A_OUT_OF_MEMORY");
        char *locale = copy.get();
        result = OID_SetLocale(status, inoutp_oidHandle, &locale);
    }
    if (result == 0)
        result = OID_LookupBinary(status, *inoutp_oidHandle, in_oid, outp_attrName, 0);
    if (result != 0)
        return ALA_FAIL(ALA_A_OID_ERROR, "Return code for ALA__LookupAttrNameFromOID is ALA_A_OID_ERROR. "
                                         "OID_LookupBinary failed.");
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_GetAttributeType(const ALA_attrPair *attribute, uint32_t *valueType,
                                   ALA_valueKind_t *kind) {
    if (attribute == nullptr || valueType == nullptr || kind == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "an address is NULL in ALA_GetAttributeType; ALA_A_INVALID_ARG");
    *valueType = reinterpret_cast<const PairBlock *>(attribute)->type;
    const ValueType *row = findValueType(*valueType);
    *kind = row != nullptr ? row->kind : ALA_KIND_TEXT;
    return ALA_N_NORMAL;
}
