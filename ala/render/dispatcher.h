// Rendering: one unpacked value becomes text on an attrPair.
#pragma once

#include <string_view>

#include "ala/ala.h"
#include "ala/base/record.h"
#include "service/packed.h"

// Renders one value of an attribute.  Without a pair in *inoutp_attribute a new one is made; otherwise the
// text is appended to the pair's values.  Takes over in_attrVal, which may be null for an attribute without a
// value.  On failure a new pair does not reach the caller, and one that was there keeps its values and the
// node begun.
ALA_retCode_t ALA__GetAttribute(const attrValNode *inp_node, void *in_attrVal,
                                AS_attrValDesc_t in_attrValDesc, const char *inp_locale,
                                void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute);

// The same of an attribute whose name is known, in a buffer of OID_NAME_SIZE bytes, with its NUL; one without
// data is that of the node's object identifier.  Times are written in the given form.
ALA_retCode_t ALA__GetNamedAttribute(const attrValNode *inp_node, std::string_view in_knownName,
                                     void *in_attrVal, AS_attrValDesc_t in_attrValDesc,
                                     const char *inp_locale, ALA_timeForm_t in_timeForm,
                                     void **inoutp_oidHandle, ALA_attrPair **inoutp_attribute);

// Releases a value record; null is fine.
void ALA__Cleanup(void *in_attr, AS_attrValDesc_t in_valDesc);
