// Render functions of object identifiers and of lists.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderOid(Rendering &inout_rendering, const GEN_oid_t &in_value);
const RenderFailure *renderNameOrOidSeq(Rendering &inout_rendering, const GEN_nameOrOidSeq &in_head);
const RenderFailure *renderPageSelectSeq(Rendering &inout_rendering, const GEN_pageSelectSeq &in_head);
const RenderFailure *renderMediaConsumedSeq(Rendering &inout_rendering, const GEN_mediaConsumedSeq &in_head);
const RenderFailure *renderSetOfObjId(Rendering &inout_rendering, const GEN_setOfObjId &in_head);

} // namespace qvledger
