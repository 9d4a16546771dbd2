// GENU_Extract...: the texts of value records as plain UTF-8.
//
// Choice 1 is copied unchanged, 2 is T.61, 3 Latin-1, 4 big-endian UCS-2, 5 a numbered code set (IANA
// MIBenum).  A text ends at its first NUL.  Units that cannot be converted become "?"
// (service/text/convert.h).
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

constexpr std::int32_t GENU_E_NO_MEMORY = 2; // a result of the extractions

extern "C" {

// Makes a new NUL-terminated text, released with free.  0; non-zero, with the text null, for a null value or
// a choice outside 1 to 5; GENU_E_NO_MEMORY when memory runs out.
std::int32_t GENU_ExtractText(STF_l__hdr *in_status, char **outpp_text, const GEN_text *inp_value,
                              std::int32_t in_reserved);
std::int32_t GENU_ExtractSimpleName(STF_l__hdr *in_status, char **outpp_text, const GEN_simpleName *inp_value,
                                    std::int32_t in_reserved);

// The name's text as above, and the domain type in name_syntax_o unless outp_type is null: the number of its
// globalForm, 0 without a syntax, 1 for a syntax in any other form.
std::int32_t GENU_ExtractDistNameString(STF_l__hdr *in_status, char **outpp_text, std::uint32_t *outp_type,
                                        const GEN_distNameString *inp_value, std::int32_t in_reserved);

// Makes a new value of a UTF-8 text (null means empty) and a domain type.  0, or GENU_E_NO_MEMORY with the
// value null.  GEN_DeleteDistNameString releases it, and also what ODP_UnpackAV delivers of value type 6.
std::int32_t GENU_MakeDistNameString2(STF_l__hdr *in_status, GEN_distNameString **outpp_value,
                                      const char *inp_text, std::uint32_t in_type, std::int32_t in_reserved);
void GEN_DeleteDistNameString(STF_l__hdr *in_status, GEN_distNameString *inp_value, void *in_allocator);

} // extern "C"
