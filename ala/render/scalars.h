// Render functions of numbers, word lists and times.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderBoolean(Rendering &inout_rendering, const GEN_boolean_t &in_value);
const RenderFailure *renderInt(Rendering &inout_rendering, const std::int32_t &in_value);
const RenderFailure *renderShort(Rendering &inout_rendering, const std::int16_t &in_value);
const RenderFailure *renderReal(Rendering &inout_rendering, const double &in_value);
const RenderFailure *renderCardinal64(Rendering &inout_rendering, const GEN_cardinal64 &in_value);
const RenderFailure *renderPageOrder(Rendering &inout_rendering, const GEN_pageOrderType_t &in_value);
const RenderFailure *renderTime(Rendering &inout_rendering, const GEN_generalizedTime &in_value);

} // namespace qvledger
