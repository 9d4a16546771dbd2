// A pair of an attribute's name and its values: its making from values and its release.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"
#include "ala/base/record.h"
#include "ala/render/value_types.h"
#include "service/oid/oid.h"

// Renders one value of an attribute.  Without a pair in *inoutp_attribute a new one is made; otherwise the
// text is appended to the pair's values.  Takes over in_attrVal, which may be null for an attribute without a
// value.  On failure a new pair does not reach the caller, and one that was there keeps its values and gets
// the text that the failed value has reached.
ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute);

// The name of an attribute, whose pair is made with its first value.  A locale that is not null stays set on
// the database handle.  ALA_A_OUT_OF_MEMORY, ALA_A_OID_ERROR.
ALA_retCode_t ALA__LookupAttrNameFromOID(const std::uint8_t *in_oid, const char *inp_locale,
                                         void **inoutp_oidHandle, char (&outp_attrName)[OID_NAME_SIZE]);

// A value with its text in one piece, which free releases.  0, or ALA_A_OUT_OF_MEMORY with the variable null.
ALA_retCode_t ALA__AllocValue(attributeVal **outpp_val, std::string_view in_text);

// Releases a value record; null is fine.
void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc);

namespace qvledger {

// A value with its text, which goes on after the record, and a NUL.
struct ValueBlock {
    attributeVal node;  // what the caller sees; first, so that its address is this record's
    std::uint32_t size; // of the text
    char text[4];
};

// ALA__GetAttribute with more to render by.
ALA_retCode_t getAttribute(const attrValNode &node, void *value, AS_attrValDesc_t description,
                           const char *locale, const RenderContext &context, ALA_attrPair **pair);

// The same of a packed value, for an attribute whose name is known; no data: an attribute without a value.
// Also ALA_A_ODPUNPACK_ERROR, which is not logged: the bytes are not a value of the attribute's type, and the
// pair is as it was.
ALA_retCode_t getPackedAttribute(const attrValNode &node, std::span<const std::uint8_t> packed,
                                 std::string_view name, const RenderContext &context, ALA_attrPair **pair);

} // namespace qvledger
