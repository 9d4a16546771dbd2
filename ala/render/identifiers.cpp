// Renders values that name things: identifiers, media, pages, and lists of them.
#include "ala/render/identifiers.h"

#include "ala/render/formatters.h"
#include "ala/render/name_lookup.h"

using namespace qvledger;

const RenderFailure *qvledger::renderOid(Rendering &rendering, const GEN_oid_t &value) {
    static constexpr RenderFailure kUnknown = {
        ALA_A_OID_ERROR, "ALA__IdentToAsciiStripped failed for oid: %s in ALA__GetAttribute"};
    return addStrippedName(rendering.status, *rendering.context.oidHandle, rendering.text, value) ? nullptr
                                                                                                  : &kUnknown;
}

// Renders all elements as one value, with a space between elements.
template <class Node, class AddElement>
static const RenderFailure *renderList(Rendering &rendering, const Node &head, AddElement add) {
    for (const Node *node = &head; node != nullptr; node = node->next) {
        add(*node);
        if (node->next != nullptr)
            rendering.text.add(' ');
    }
    return nullptr;
}

const RenderFailure *qvledger::renderNameOrOidSeq(Rendering &rendering, const GEN_nameOrOidSeq &head) {
    return renderList(rendering, head, [&](const GEN_nameOrOidSeq &node) {
        ALA__NameOrOidToAscii(rendering.status, *rendering.context.oidHandle, rendering.text, &node._value);
    });
}

const RenderFailure *qvledger::renderPageSelectSeq(Rendering &rendering, const GEN_pageSelectSeq &head) {
    return renderList(rendering, head, [&](const GEN_pageSelectSeq &node) {
        ALA__pageSelectToAscii(rendering.status, *rendering.context.oidHandle, rendering.text, &node.value);
    });
}

const RenderFailure *qvledger::renderMediaConsumedSeq(Rendering &rendering,
                                                      const GEN_mediaConsumedSeq &head) {
    return renderList(rendering, head, [&](const GEN_mediaConsumedSeq &node) {
        ALA__mediaConsumedToAscii(rendering.status, *rendering.context.oidHandle, rendering.text,
                                  &node._value);
    });
}

const RenderFailure *qvledger::renderSetOfObjId(Rendering &rendering, const GEN_setOfObjId &head) {
    return renderList(rendering, head, [&](const GEN_setOfObjId &node) {
        ALA__ObjectIdentToAscii(rendering.status, *rendering.context.oidHandle, rendering.text, node.value);
    });
}
