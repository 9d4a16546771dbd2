// Texts and distinguished name strings.
#include "ala/render/renderers.h"

#include <cstring>

#include "ala/render/name_lookup.h"
#include "service/text.h"

const RenderFailure *renderCharacters(Rendering &inoutp_rendering, const void *inp_value) {
    inoutp_rendering.text.add(static_cast<const char *>(inp_value));
    return nullptr;
}

const RenderFailure *renderOctets(Rendering &inoutp_rendering, const void *inp_value) {
    static constexpr RenderFailure kNoMemory = {ALA_A_OUT_OF_MEMORY,
                                                "malloc failed for tempOctet in ALA__GetAttribute"};
    const auto &octets = *static_cast<const GEN_string *>(inp_value);
    if (octets.length == 0)
        return nullptr;
    const auto length = static_cast<std::size_t>(octets.length);
    auto *tempOctet = static_cast<char *>(std::malloc(length + 1));
    if (tempOctet == nullptr)
        return &kNoMemory;
    std::memcpy(tempOctet, octets._value, length);
    tempOctet[length] = '\0';
    inoutp_rendering.replaceText(tempOctet);
    return nullptr;
}

const RenderFailure *renderText(Rendering &inoutp_rendering, const void *inp_value) {
    char *string = nullptr;
    if (GENU_ExtractText(inoutp_rendering.status, &string, static_cast<const GEN_text *>(inp_value), 0) != 0)
        return &kExtractTextFailed;
    inoutp_rendering.replaceText(string);
    return nullptr;
}

const RenderFailure *renderSimpleName(Rendering &inoutp_rendering, const void *inp_value) {
    static constexpr RenderFailure kExtractSimpleNameFailed = {
        ALA_A_OUT_OF_MEMORY, "GENU_ExtractSimpleName failed for oid: %s in ALA__GetAttribute"};
    char *string = nullptr;
    if (GENU_ExtractSimpleName(inoutp_rendering.status, &string,
                               static_cast<const GEN_simpleName *>(inp_value), 0) != 0)
        return &kExtractSimpleNameFailed;
    inoutp_rendering.replaceText(string);
    return nullptr;
}

// The name of the syntax and a colon, if there is one, then the name.
static bool addDistName(const Rendering &in_rendering, const GEN_distNameString &in_name, Text &inoutp_text) {
    if (in_name.name_syntax_o != nullptr) {
        ALA__NameOrOidToAscii(in_rendering.status, *in_rendering.oidHandle, inoutp_text,
                              in_name.name_syntax_o);
        inoutp_text.add(':');
    }
    return ALA__AddText(in_rendering.status, inoutp_text, &in_name.name);
}

const RenderFailure *renderDistName(Rendering &inoutp_rendering, const void *inp_value) {
    const auto &name = *static_cast<const GEN_distNameString *>(inp_value);
    Text text; // the value shows all of it or nothing
    if (!addDistName(inoutp_rendering, name, text))
        return &kExtractTextFailed;
    inoutp_rendering.text.add(text);
    return nullptr;
}

namespace {

struct ValueChain {
    const ALA_attrPair *pair; // that the values are for
    attributeVal *head = nullptr;
    attributeVal **end = &head;

    explicit ValueChain(const ALA_attrPair *inp_pair) : pair(inp_pair) {}
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

static const RenderFailure *addElement(const Rendering &in_rendering, const GEN_distNameString *inp_name,
                                       ValueChain &inoutp_values) {
    static constexpr RenderFailure kNoNode = {ALA_A_OUT_OF_MEMORY,
                                              "malloc failed for tmpNode in ALA__GetAttribute"};
    static constexpr RenderFailure kNoText = {ALA_A_OUT_OF_MEMORY,
                                              "strdup failed for tmpNode->value in ALA__GetAttribute"};
    char room[kValueSize];
    Text text(room, sizeof room);
    if (inp_name != nullptr && !addDistName(in_rendering, *inp_name, text))
        return &kExtractTextFailed;
    if (text.failed())
        return &kNoText;
    if (makeFittingValue(inoutp_values.end, text) != ALA_N_NORMAL)
        return &kNoNode;
    inoutp_values.end = &(*inoutp_values.end)->next;
    return nullptr;
}

// This type alone gives several values.  They take the place of the target, which goes whatever the outcome.
const RenderFailure *renderDistNameSeq(Rendering &inoutp_rendering, const void *inp_value) {
    ValueChain values(inoutp_rendering.pair);
    const RenderFailure *failure = nullptr;
    for (const auto *element = static_cast<const GEN_distNameStringSeq *>(inp_value);
         element != nullptr && failure == nullptr; element = element->next)
        failure = addElement(inoutp_rendering, element->_value, values);
    *inoutp_rendering.link = failure == nullptr ? std::exchange(values.head, nullptr) : nullptr;
    return failure;
}
