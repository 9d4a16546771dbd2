// Texts and distinguished name strings.
#include "ala/render/text_types.h"

#include <cstring>

#include "ala/render/name_lookup.h"
#include "service/text.h"

using namespace qvledger;

constexpr RenderFailure kExtractTextFailed = {ALA_A_OUT_OF_MEMORY,
                                              "GENU_ExtractText failed for oid: %s in ALA__GetAttribute"};

const RenderFailure *qvledger::renderCharacters(Rendering &rendering, const void *value) {
    rendering.text.add(static_cast<const char *>(value));
    return nullptr;
}

const RenderFailure *qvledger::renderOctets(Rendering &rendering, const void *value) {
    static constexpr RenderFailure kNoMemory = {ALA_A_OUT_OF_MEMORY,
                                                "malloc failed for tempOctet in ALA__GetAttribute"};
    const auto &octets = *static_cast<const GEN_string *>(value);
    if (octets.length == 0)
        return nullptr;
    const auto length = static_cast<std::size_t>(octets.length);
    auto *tempOctet = static_cast<char *>(std::malloc(length + 1));
    if (tempOctet == nullptr)
        return &kNoMemory;
    std::memcpy(tempOctet, octets._value, length);
    tempOctet[length] = '\0';
    rendering.replaceText(tempOctet);
    return nullptr;
}

const RenderFailure *qvledger::renderText(Rendering &rendering, const void *value) {
    char *string = nullptr;
    if (GENU_ExtractText(rendering.status, &string, static_cast<const GEN_text *>(value), 0) != 0)
        return &kExtractTextFailed;
    rendering.replaceText(string);
    return nullptr;
}

const RenderFailure *qvledger::renderSimpleName(Rendering &rendering, const void *value) {
    static constexpr RenderFailure kExtractSimpleNameFailed = {
        ALA_A_OUT_OF_MEMORY, "GENU_ExtractSimpleName failed for oid: %s in ALA__GetAttribute"};
    char *string = nullptr;
    if (GENU_ExtractSimpleName(rendering.status, &string, static_cast<const GEN_simpleName *>(value), 0) != 0)
        return &kExtractSimpleNameFailed;
    rendering.replaceText(string);
    return nullptr;
}

// The name of the syntax and a colon, if there is one, then the name.
static bool addDistName(const Rendering &rendering, const GEN_distNameString &name, Text &text) {
    if (name.name_syntax_o != nullptr) {
        ALA__NameOrOidToAscii(rendering.status, *rendering.oidHandle, text, name.name_syntax_o);
        text.add(':');
    }
    return ALA__AddText(rendering.status, text, &name.name);
}

const RenderFailure *qvledger::renderDistName(Rendering &rendering, const void *value) {
    const auto &name = *static_cast<const GEN_distNameString *>(value);
    Text text; // the value shows all of it or nothing
    if (!addDistName(rendering, name, text))
        return &kExtractTextFailed;
    rendering.text.add(text);
    return nullptr;
}

namespace {

struct ValueChain {
    const ALA_attrPair *pair; // that the values are for
    attributeVal *head = nullptr;
    attributeVal **end = &head;

    explicit ValueChain(const ALA_attrPair *givenPair) : pair(givenPair) {}
    ~ValueChain() {
        while (head != nullptr) {
            attributeVal *value = head;
            head = value->next;
            ALA__FreeValue(pair, value);
        }
    }
    ValueChain(const ValueChain &) = delete;
    ValueChain &operator=(const ValueChain &) = delete;
};

} // namespace

static const RenderFailure *addElement(const Rendering &rendering, const GEN_distNameString *name,
                                       ValueChain &values) {
    static constexpr RenderFailure kNoNode = {ALA_A_OUT_OF_MEMORY,
                                              "malloc failed for tmpNode in ALA__GetAttribute"};
    static constexpr RenderFailure kNoText = {ALA_A_OUT_OF_MEMORY,
                                              "strdup failed for tmpNode->value in ALA__GetAttribute"};
    char room[kValueSize];
    Text text(room, sizeof room);
    if (name != nullptr && !addDistName(rendering, *name, text))
        return &kExtractTextFailed;
    if (text.failed())
        return &kNoText;
    if (ALA__AllocValue(values.end, text) != ALA_N_NORMAL)
        return &kNoNode;
    values.end = &(*values.end)->next;
    return nullptr;
}

// This type alone gives several values.  They take the place of the target, which goes whatever the outcome.
const RenderFailure *qvledger::renderDistNameSeq(Rendering &rendering, const void *value) {
    ValueChain values(rendering.pair);
    const RenderFailure *failure = nullptr;
    for (const auto *element = static_cast<const GEN_distNameStringSeq *>(value);
         element != nullptr && failure == nullptr; element = element->next)
        failure = addElement(rendering, element->_value, values);
    *rendering.link = failure == nullptr ? std::exchange(values.head, nullptr) : nullptr;
    return failure;
}
