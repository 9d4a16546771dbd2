// Render functions for object identifiers and for lists.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderOid(Rendering &rendering, const GEN_oid_t &value);
const RenderFailure *renderNameOrOidSeq(Rendering &rendering, const GEN_nameOrOidSeq &head);
const RenderFailure *renderPageSelectSeq(Rendering &rendering, const GEN_pageSelectSeq &head);
const RenderFailure *renderMediaConsumedSeq(Rendering &rendering, const GEN_mediaConsumedSeq &head);
const RenderFailure *renderSetOfObjId(Rendering &rendering, const GEN_setOfObjId &head);

} // namespace qvledger
