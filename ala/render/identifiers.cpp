// Values that name things: identifiers, media, pages, and lists of them.
#include "ala/render/renderers.h"

#include "ala/render/formatters.h"
#include "ala/render/name_lookup.h"

const RenderFailure *renderOid(Rendering &inoutp_rendering, const void *inp_value) {
    static constexpr RenderFailure kUnknown = {
        ALA_A_OID_ERROR, "ALA__IdentToAsciiStripped failed for oid: %s in ALA__GetAttribute"};
    char *name = ALA__IdentToAsciiStripped(inoutp_rendering.status, *inoutp_rendering.oidHandle,
                                           *static_cast<const GEN_oid_t *>(inp_value));
    if (name == nullptr)
        return &kUnknown;
    inoutp_rendering.replaceText(name);
    return nullptr;
}

// All elements in one value, set off from each other by a blank.
template <class Node, class AddElement>
static const RenderFailure *renderList(Rendering &inoutp_rendering, const void *inp_value,
                                       AddElement in_add) {
    for (const auto *node = static_cast<const Node *>(inp_value); node != nullptr; node = node->next) {
        in_add(*node);
        if (node->next != nullptr)
            inoutp_rendering.text.add(' ');
    }
    return nullptr;
}

const RenderFailure *renderNameOrOidSeq(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_nameOrOidSeq>(inoutp_rendering, inp_value, [&](const GEN_nameOrOidSeq &node) {
        ALA__NameOrOidToAscii(inoutp_rendering.status, *inoutp_rendering.oidHandle, inoutp_rendering.text,
                              &node._value);
    });
}

const RenderFailure *renderPageSelectSeq(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_pageSelectSeq>(inoutp_rendering, inp_value, [&](const GEN_pageSelectSeq &node) {
        ALA__pageSelectToAscii(inoutp_rendering.status, *inoutp_rendering.oidHandle, inoutp_rendering.text,
                               &node.value);
    });
}

const RenderFailure *renderMediaConsumedSeq(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_mediaConsumedSeq>(
        inoutp_rendering, inp_value, [&](const GEN_mediaConsumedSeq &node) {
            ALA__mediaConsumedToAscii(inoutp_rendering.status, *inoutp_rendering.oidHandle,
                                      inoutp_rendering.text, &node._value);
        });
}

const RenderFailure *renderSetOfObjId(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_setOfObjId>(inoutp_rendering, inp_value, [&](const GEN_setOfObjId &node) {
        ALA__ObjectIdentToAscii(inoutp_rendering.status, *inoutp_rendering.oidHandle, inoutp_rendering.text,
                                node.value);
    });
}
