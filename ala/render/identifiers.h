// Render functions of what holds object identifiers.
#pragma once

#include "ala/render/value_types.h"

namespace qvledger {

RenderFunction renderOid;
RenderFunction renderNameOrOidSeq;
RenderFunction renderPageSelectSeq;
RenderFunction renderMediaConsumedSeq;
RenderFunction renderSetOfObjId;

} // namespace qvledger
