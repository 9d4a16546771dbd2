// GENU_Extract...: the texts of attribute values in UTF-8.
//
// The choice of a value selects the code set of its text: 1 is copied unchanged as UTF-8, 2 is T.61, 3 is
// Latin-1, 4 is big-endian UCS-2, and 5 is a code set with an IANA MIBenum number.  A text ends at its first
// NUL.  Units that cannot be converted become "?" (service/text/convert.h).
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

constexpr std::int32_t GENU_E_NO_MEMORY = 2; // memory or another resource ran out

extern "C" {

// Make a new NUL-terminated text; release it with free().  Return 0; GENU_E_NO_MEMORY when memory or another
// resource runs out; another non-zero number for a null value or a choice outside 1 to 5.  The text is null
// on failure.
std::int32_t GENU_ExtractText(STF_l__hdr *in_status, char **outpp_text, const GEN_text *inp_value,
                              std::int32_t in_reserved);
std::int32_t GENU_ExtractSimpleName(STF_l__hdr *in_status, char **outpp_text, const GEN_simpleName *inp_value,
                                    std::int32_t in_reserved);

// Makes the text of the name as above.  Sets *outp_type to the domain type, unless outp_type is null.  The
// domain type is 0 if the value or name_syntax_o is null, and 1 if name_syntax_o has no globalForm; otherwise
// it is the globalForm.
std::int32_t GENU_ExtractDistNameString(STF_l__hdr *in_status, char **outpp_text, std::uint32_t *outp_type,
                                        const GEN_distNameString *inp_value, std::int32_t in_reserved);

// Makes a new value from a UTF-8 text (null means empty) and a domain type.  Returns 0; GENU_E_NO_MEMORY,
// with the value null, when memory runs out.  GEN_DeleteDistNameString releases this value or a value of type
// 6 from ODP_UnpackAV.
std::int32_t GENU_MakeDistNameString2(STF_l__hdr *in_status, GEN_distNameString **outpp_value,
                                      const char *inp_text, std::uint32_t in_type, std::int32_t in_reserved);
void GEN_DeleteDistNameString(STF_l__hdr *in_status, GEN_distNameString *inp_value, void *in_allocator);

} // extern "C"
