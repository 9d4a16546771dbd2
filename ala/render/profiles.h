// Render functions of profiles and addresses.
#pragma once

#include "ala/render/value_types.h"

namespace qvledger {

RenderFunction renderEventHandlingProfile;
RenderFunction renderIgnoredAttribute;
RenderFunction renderResultsProfile;
RenderFunction renderDeliveryAddress;

} // namespace qvledger
