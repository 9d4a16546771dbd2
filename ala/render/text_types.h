// Render functions of texts and names of people and places.
#pragma once

#include "ala/render/value_types.h"

namespace qvledger {

RenderFunction renderCharacters;
RenderFunction renderOctets;
RenderFunction renderText;
RenderFunction renderSimpleName;
RenderFunction renderDistName;
RenderFunction renderDistNameSeq;

} // namespace qvledger
