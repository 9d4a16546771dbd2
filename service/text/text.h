// GENU_Extract...: the texts of value records as plain UTF-8.
//
// A record's choice selects the code set of its text: 1 is copied unchanged, 2 is T.61, 3 is Latin-1, 4 is
// big-endian UCS-2, and 5 is a code set with an IANA MIBenum number.  A text ends at its first NUL.  Units
// that cannot be converted become "?" (service/text/convert.h).
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

constexpr std::int32_t GENU_E_NO_MEMORY = 2; // a result of the extractions

extern "C" {

// Make a new NUL-terminated text that the caller frees.  Return 0; GENU_E_NO_MEMORY when memory runs out;
// another non-zero number for a null value or a choice outside 1 to 5.  The text is null on failure.
std::int32_t GENU_ExtractText(STF_l__hdr *in_status, char **outpp_text, const GEN_text *inp_value,
                              std::int32_t in_reserved);
std::int32_t GENU_ExtractSimpleName(STF_l__hdr *in_status, char **outpp_text, const GEN_simpleName *inp_value,
                                    std::int32_t in_reserved);

// Makes the text of the name as above, and sets *outp_type, unless outp_type is null, to the domain type.
// The domain type is the globalForm of name_syntax_o.  It is 0 without a syntax, and 1 for a syntax in
// another form.
std::int32_t GENU_ExtractDistNameString(STF_l__hdr *in_status, char **outpp_text, std::uint32_t *outp_type,
                                        const GEN_distNameString *inp_value, std::int32_t in_reserved);

// Makes a new value from a UTF-8 text (null means empty) and a domain type.  Returns 0; GENU_E_NO_MEMORY,
// with the value null, when memory runs out.  GEN_DeleteDistNameString releases the value, and also values of
// type 6 from ODP_UnpackAV.
std::int32_t GENU_MakeDistNameString2(STF_l__hdr *in_status, GEN_distNameString **outpp_value,
                                      const char *inp_text, std::uint32_t in_type, std::int32_t in_reserved);
void GEN_DeleteDistNameString(STF_l__hdr *in_status, GEN_distNameString *inp_value, void *in_allocator);

} // extern "C"
