// Renders texts and distinguished name strings.
#include "ala/render/text_types.h"

#include <cstring>

#include "ala/render/name_lookup.h"
#include "service/text/text.h"

using namespace qvledger;

constexpr RenderFailure kExtractTextFailed = {ALA_A_OUT_OF_MEMORY,
                                              "GENU_ExtractText failed for oid: %s in ALA__GetAttribute"};

const RenderFailure *qvledger::renderOctets(Rendering &rendering, const GEN_string &octets) {
    static constexpr RenderFailure kNoMemory = {ALA_A_OUT_OF_MEMORY,
                                                "malloc failed for tempOctet in ALA__GetAttribute"};
    rendering.text.addUpToNul(octets._value, static_cast<std::size_t>(octets.length));
    return rendering.text.failed() ? &kNoMemory : nullptr;
}

const RenderFailure *qvledger::renderText(Rendering &rendering, const GEN_text &value) {
    char *string = nullptr;
    if (GENU_ExtractText(rendering.status, &string, &value, 0) != 0)
        return &kExtractTextFailed;
    rendering.text.replace(string);
    return nullptr;
}

const RenderFailure *qvledger::renderSimpleName(Rendering &rendering, const GEN_simpleName &value) {
    static constexpr RenderFailure kExtractSimpleNameFailed = {
        ALA_A_OUT_OF_MEMORY, "GENU_ExtractSimpleName failed for oid: %s in ALA__GetAttribute"};
    char *string = nullptr;
    if (GENU_ExtractSimpleName(rendering.status, &string, &value, 0) != 0)
        return &kExtractSimpleNameFailed;
    rendering.text.replace(string);
    return nullptr;
}

// Appends the name.  If the name has a syntax, first appends the name of the syntax and a colon.  False if
// the text of the name cannot be extracted.
static bool addDistName(Rendering &rendering, const GEN_distNameString &name) {
    if (name.name_syntax_o != nullptr) {
        ALA__NameOrOidToAscii(rendering.status, *rendering.context.oidHandle, rendering.text,
                              name.name_syntax_o);
        rendering.text.add(':');
    }
    return addText(rendering.status, rendering.text, &name.name);
}

// Renders the whole name or nothing.
const RenderFailure *qvledger::renderDistName(Rendering &rendering, const GEN_distNameString &name) {
    const bool isThere = addDistName(rendering, name);
    if (!isThere || rendering.text.failed())
        rendering.text.clear();
    return isThere ? nullptr : &kExtractTextFailed;
}

// Renders each name as a separate value; if one of the names fails, renders no value.  No other type renders
// several values.
const RenderFailure *qvledger::renderDistNameSeq(Rendering &rendering, const GEN_distNameStringSeq &head) {
    static constexpr RenderFailure kNoText = {ALA_A_OUT_OF_MEMORY,
                                              "strdup failed for tmpNode->value in ALA__GetAttribute"};
    for (const GEN_distNameStringSeq *element = &head; element != nullptr; element = element->next) {
        if (element->_value != nullptr && !addDistName(rendering, *element->_value)) {
            rendering.values = 0;
            return &kExtractTextFailed;
        }
        if (element->next != nullptr) {
            rendering.text.add('\0');
            ++rendering.values;
        }
    }
    if (rendering.text.failed())
        rendering.values = 0;
    return rendering.text.failed() ? &kNoText : nullptr;
}
