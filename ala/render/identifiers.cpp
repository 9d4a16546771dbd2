// Values that name things: identifiers, media, pages, and lists of them.
#include "ala/render/identifiers.h"

#include "ala/render/formatters.h"
#include "ala/render/name_lookup.h"

using namespace qvledger;

const RenderFailure *qvledger::renderOid(Rendering &rendering, const void *value) {
    static constexpr RenderFailure kUnknown = {
        ALA_A_OID_ERROR, "ALA__IdentToAsciiStripped failed for oid: %s in ALA__GetAttribute"};
    char *name = ALA__IdentToAsciiStripped(rendering.status, *rendering.oidHandle,
                                           *static_cast<const GEN_oid_t *>(value));
    if (name == nullptr)
        return &kUnknown;
    rendering.replaceText(name);
    return nullptr;
}

// All elements in one value, set off from each other by a blank.
template <class Node, class AddElement>
static const RenderFailure *renderList(Rendering &rendering, const void *value, AddElement add) {
    for (const auto *node = static_cast<const Node *>(value); node != nullptr; node = node->next) {
        add(*node);
        if (node->next != nullptr)
            rendering.text.add(' ');
    }
    return nullptr;
}

const RenderFailure *qvledger::renderNameOrOidSeq(Rendering &rendering, const void *value) {
    return renderList<GEN_nameOrOidSeq>(rendering, value, [&](const GEN_nameOrOidSeq &node) {
        ALA__NameOrOidToAscii(rendering.status, *rendering.oidHandle, rendering.text, &node._value);
    });
}

const RenderFailure *qvledger::renderPageSelectSeq(Rendering &rendering, const void *value) {
    return renderList<GEN_pageSelectSeq>(rendering, value, [&](const GEN_pageSelectSeq &node) {
        ALA__pageSelectToAscii(rendering.status, *rendering.oidHandle, rendering.text, &node.value);
    });
}

const RenderFailure *qvledger::renderMediaConsumedSeq(Rendering &rendering, const void *value) {
    return renderList<GEN_mediaConsumedSeq>(rendering, value, [&](const GEN_mediaConsumedSeq &node) {
        ALA__mediaConsumedToAscii(rendering.status, *rendering.oidHandle, rendering.text, &node._value);
    });
}

const RenderFailure *qvledger::renderSetOfObjId(Rendering &rendering, const void *value) {
    return renderList<GEN_setOfObjId>(rendering, value, [&](const GEN_setOfObjId &node) {
        ALA__ObjectIdentToAscii(rendering.status, *rendering.oidHandle, rendering.text, node.value);
    });
}
