// Values that name things: identifiers, media, pages, and lists of them.
#include "ala/render/renderers.h"

#include "ala/render/formatters.h"
#include "ala/render/names.h"

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

const RenderFailure *renderNameOrOid(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__NameOrOidToAscii(inoutp_rendering.status, static_cast<const GEN_nameOrOid *>(inp_value),
                          *inoutp_rendering.oidHandle, inoutp_rendering.text);
    return nullptr;
}

const RenderFailure *renderCardinalOrName(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__CardOrNoidToAscii(static_cast<const GEN_cardinalOrNoid *>(inp_value), *inoutp_rendering.oidHandle,
                           inoutp_rendering.text);
    return nullptr;
}

const RenderFailure *renderDocumentFormat(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__DocFormatToAscii(inoutp_rendering.status, inoutp_rendering.oidHandle,
                          static_cast<const GEN_documentFormat *>(inp_value), inoutp_rendering.text);
    return nullptr;
}

const RenderFailure *renderFontReference(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__FontReferenceToAscii(inoutp_rendering.status, static_cast<const GEN_fontReference *>(inp_value),
                              inoutp_rendering.text);
    return nullptr;
}

const RenderFailure *renderFinishing(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__FinishingToAscii(inoutp_rendering.status, static_cast<const GEN_finishing *>(inp_value),
                          *inoutp_rendering.oidHandle, inoutp_rendering.text);
    return nullptr;
}

const RenderFailure *renderMediaSelect(Rendering &inoutp_rendering, const void *inp_value) {
    ALA__MedSelectToAscii(static_cast<const GEN_mediaSelect *>(inp_value), *inoutp_rendering.oidHandle,
                          inoutp_rendering.text);
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
        ALA__NameOrOidToAscii(inoutp_rendering.status, &node._value, *inoutp_rendering.oidHandle,
                              inoutp_rendering.text);
    });
}

const RenderFailure *renderPageSelectSeq(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_pageSelectSeq>(inoutp_rendering, inp_value, [&](const GEN_pageSelectSeq &node) {
        ALA__pageSelectToAscii(inoutp_rendering.status, &node.value, *inoutp_rendering.oidHandle,
                               inoutp_rendering.text);
    });
}

const RenderFailure *renderMediaConsumedSeq(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_mediaConsumedSeq>(
        inoutp_rendering, inp_value, [&](const GEN_mediaConsumedSeq &node) {
            ALA__mediaConsumedToAscii(inoutp_rendering.status, &node._value, *inoutp_rendering.oidHandle,
                                      inoutp_rendering.text);
        });
}

const RenderFailure *renderSetOfObjId(Rendering &inoutp_rendering, const void *inp_value) {
    return renderList<GEN_setOfObjId>(inoutp_rendering, inp_value, [&](const GEN_setOfObjId &node) {
        ALA__ObjectIdentToAscii(inoutp_rendering.status, node.value, *inoutp_rendering.oidHandle,
                                inoutp_rendering.text);
    });
}
