// Render functions for numbers, enumerations and times.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderBoolean(Rendering &rendering, const GEN_boolean_t &value);
const RenderFailure *renderInt(Rendering &rendering, const std::int32_t &value);
const RenderFailure *renderShort(Rendering &rendering, const std::int16_t &value);
const RenderFailure *renderReal(Rendering &rendering, const double &value);
const RenderFailure *renderCardinal64(Rendering &rendering, const GEN_cardinal64 &value);
const RenderFailure *renderPageOrder(Rendering &rendering, const GEN_pageOrderType_t &value);
const RenderFailure *renderTime(Rendering &rendering, const GEN_generalizedTime &value);

} // namespace qvledger
