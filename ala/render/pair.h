// Makes and releases pairs of an attribute's name and its values.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"
#include "ala/base/record.h"
#include "ala/render/value_types.h"
#include "service/oid/oid.h"

// Renders one value of an attribute.  Makes a new pair if *inoutp_attribute is null, else appends the text to
// the pair's values.  Takes ownership of in_attrVal, which is null for an attribute without a value.  On
// failure no pair is made; an existing pair keeps its values and may also get the text rendered so far.
// ALA_A_OID_ERROR: the attribute or a value has no name, or the locale cannot be set; ALA_A_FAIL_TO_GET_TIME:
// a time cannot be converted; ALA_A_OUT_OF_MEMORY: memory ran out, or a text cannot be extracted.
ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute);

// Looks up the name of an attribute.  A non-null locale remains set on the database handle.  ALA_A_OID_ERROR:
// the attribute has no name, or the locale cannot be set; ALA_A_OUT_OF_MEMORY: the locale cannot be copied.
ALA_retCode_t ALA__LookupAttrNameFromOID(const std::uint8_t *in_oid, const char *inp_locale,
                                         void **inoutp_oidHandle, char (&outp_attrName)[OID_NAME_SIZE]);

// Makes a value and its text in one block, to be released with free.  Returns 0, or ALA_A_OUT_OF_MEMORY with
// a null output.
ALA_retCode_t ALA__AllocValue(attributeVal **outpp_val, std::string_view in_text);

// Releases a value record, which may be null.
void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc);

namespace qvledger {

// A value, followed by its text and a NUL.  The text begins in `text` and can continue after the end of this
// structure.
struct ValueBlock {
    attributeVal node;  // the public part; first, so that node and block have the same address
    std::uint32_t size; // bytes of the text
    char text[4];
};

// Does the work of ALA__GetAttribute, with a rendering context.
ALA_retCode_t getAttribute(const attrValNode &node, void *value, AS_attrValDesc_t description,
                           const char *locale, const RenderContext &context, ALA_attrPair **pair);

// Does the same for a packed value of an attribute whose name is known.  If `packed` is empty, the attribute
// has no value.  Can also return ALA_A_ODPUNPACK_ERROR: the bytes are not a value of the attribute's type, or
// memory ran out while they were read.  This failure is not logged, and the pair is unchanged.
ALA_retCode_t getPackedAttribute(const attrValNode &node, std::span<const std::uint8_t> packed,
                                 std::string_view name, const RenderContext &context, ALA_attrPair **pair);

} // namespace qvledger
