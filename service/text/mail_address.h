// O/R addresses of electronic mail, converted to text.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// Converts an O/R address to a new text that the caller frees.  The text is the RFC-822 attribute with "@"
// for "(a)".  Without such an attribute it is "/TYPE=VALUE" for each attribute and a closing "/".  Returns 0,
// or non-zero when memory runs out.  If the address has no attributes, *outpp_text stays unchanged.
std::int32_t GEN_X400ToInternetMailAddress(STF_l__hdr *in_status, char **outpp_text,
                                           const ODP_orName *inp_address, std::int32_t in_reserved);

} // extern "C"
