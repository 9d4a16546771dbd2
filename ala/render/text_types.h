// Render functions of texts and names of people and places.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderOctets(Rendering &inout_rendering, const GEN_string &in_value);
const RenderFailure *renderText(Rendering &inout_rendering, const GEN_text &in_value);
const RenderFailure *renderSimpleName(Rendering &inout_rendering, const GEN_simpleName &in_value);
const RenderFailure *renderDistName(Rendering &inout_rendering, const GEN_distNameString &in_value);
const RenderFailure *renderDistNameSeq(Rendering &inout_rendering, const GEN_distNameStringSeq &in_head);

} // namespace qvledger
