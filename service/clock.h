// The current time and the time zone.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// Gets the current time as a new value: local date and time, with the full year and utc 0.  Returns 0;
// non-zero, with the output null, when the local time cannot be computed or memory runs out.
// GEN_DeleteGeneralizedTime releases this value or a value of type 48 from ODP_UnpackAV.
std::int32_t GENU_GetCurrentTime(STF_l__hdr *in_status, GEN_generalizedTime **outpp_time,
                                 std::int32_t in_reserved);
void GEN_DeleteGeneralizedTime(STF_l__hdr *in_status, GEN_generalizedTime *inp_time, void *in_allocator);

// Sets the process's time zone from the environment.  Call it once, before any time conversion.
void GENU_TimeZoneInit();

} // extern "C"
