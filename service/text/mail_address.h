// O/R addresses of electronic mail, converted to text.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

extern "C" {

// Converts an O/R address to a new text; release it with free().  The text is the DDA:RFC-822 attribute with
// each "(a)" replaced by "@".  If there is no such attribute, the text is "/TYPE=VALUE" for each attribute
// and a closing "/".  Returns 0, or non-zero when memory runs out.  *outpp_text stays unchanged if the
// address is null or has no attributes, or on failure.
std::int32_t GEN_X400ToInternetMailAddress(STF_l__hdr *in_status, char **outpp_text,
                                           const ODP_orName *inp_address, std::int32_t in_reserved);

} // extern "C"
