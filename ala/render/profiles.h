// Render functions of profiles and addresses.
#pragma once

#include "ala/render/value_types.h"

RenderFunction renderEventHandlingProfile;
RenderFunction renderIgnoredAttribute;
RenderFunction renderResultsProfile;
RenderFunction renderDeliveryAddress;
