// Render functions of numbers, word lists and times.
#pragma once

#include "ala/render/value_types.h"

namespace qvledger {

RenderFunction renderBoolean;
RenderFunction renderInt;
RenderFunction renderShort;
RenderFunction renderReal;
RenderFunction renderCardinal64;
RenderFunction renderPageOrder;
RenderFunction renderTime;

} // namespace qvledger
