// Render functions for profiles and addresses.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderEventHandlingProfile(Rendering &rendering, const GEN_eventHandlingProfile &value);
const RenderFailure *renderIgnoredAttribute(Rendering &rendering, const GEN_ignoredAttribute &value);
const RenderFailure *renderResultsProfile(Rendering &rendering, const GEN_resultsProfile &value);
const RenderFailure *renderDeliveryAddress(Rendering &rendering, const GEN_deliveryAddress &value);

} // namespace qvledger
