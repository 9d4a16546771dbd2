// Render functions for octet strings, texts and names.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderOctets(Rendering &rendering, const GEN_string &value);
const RenderFailure *renderText(Rendering &rendering, const GEN_text &value);
const RenderFailure *renderSimpleName(Rendering &rendering, const GEN_simpleName &value);
const RenderFailure *renderDistName(Rendering &rendering, const GEN_distNameString &value);
const RenderFailure *renderDistNameSeq(Rendering &rendering, const GEN_distNameStringSeq &head);

} // namespace qvledger
