// O/R addresses of electronic mail, converted to text.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// The mail address of an O/R address as a new text, released with free: its RFC-822 attribute with "(a)" as
// "@", otherwise "/TYPE=VALUE" for each attribute and a closing "/".  0; *outpp_text stays unchanged if there
// are no attributes.  Non-zero when memory runs out.
std::int32_t GEN_X400ToInternetMailAddress(STF_l__hdr *in_status, char **outpp_text,
                                           const ODP_orName *inp_address, std::int32_t in_reserved);

} // extern "C"
