// The time of day and the time zone, as the service library gives them.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// The current time as a new record, released with GEN_DeleteGeneralizedTime: local calendar date and time,
// full year (utc 0).  0, or non-zero when the clock cannot be read or memory runs out.
// GEN_DeleteGeneralizedTime releases what ODP_UnpackAV delivers of value type 48 as well.
std::int32_t GENU_GetCurrentTime(STF_l__hdr *in_status, GEN_generalizedTime **outpp_time,
                                 std::int32_t in_reserved);
void GEN_DeleteGeneralizedTime(STF_l__hdr *in_status, GEN_generalizedTime *inp_time, void *in_allocator);

// Takes the process's time zone from the environment.  Once per process, before any time conversion.
void GENU_TimeZoneInit();

} // extern "C"
