// O/R addresses of electronic mail as texts.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// The mail address of an O/R address: its RFC-822 attribute with "(a)" as "@", otherwise "/TYPE=VALUE" for
// each attribute and a closing "/".  *outpp_text stays as it was when there is no attribute.
std::int32_t GEN_X400ToInternetMailAddress(STF_l__hdr *in_status, char **outpp_text,
                                           const ODP_orName *inp_address, std::int32_t in_reserved);

} // extern "C"
