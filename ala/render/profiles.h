// Render functions of profiles and addresses.
#pragma once

#include "ala/render/value_types.h"
#include "service/packed/values.h"

namespace qvledger {

const RenderFailure *renderEventHandlingProfile(Rendering &inout_rendering,
                                                const GEN_eventHandlingProfile &in_value);
const RenderFailure *renderIgnoredAttribute(Rendering &inout_rendering, const GEN_ignoredAttribute &in_value);
const RenderFailure *renderResultsProfile(Rendering &inout_rendering, const GEN_resultsProfile &in_value);
const RenderFailure *renderDeliveryAddress(Rendering &inout_rendering, const GEN_deliveryAddress &in_value);

} // namespace qvledger
