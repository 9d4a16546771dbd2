// Unpacked attribute values (service/packed/values.h): how to release them, failure codes, and helpers.
//
// The packed form is XDR (RFC 4506); service/packed/values.x defines the form, and docs/formats.md explains
// it.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

// Describes how to release an unpacked value.  deleteFunc releases the value and everything that the value
// points to.  copyFunc is always null, because nobody copies values.
struct AS_attrValDesc_t {
    void *(*copyFunc)(STF_l__hdr *in_status, const void *inp_value, void *in_allocator);
    void (*deleteFunc)(STF_l__hdr *in_status, void *inp_value, void *in_allocator);
};

using AS_attrValType_t = std::uint32_t;

// The value type of an access list entry, GEN_eACL.
constexpr AS_attrValType_t AS_ACCESS_LIST_ENTRY = 7;

// Failure codes, all non-zero.
constexpr std::int32_t ODP_E_REFUSED = 1; // not a value of the requested type or form
constexpr std::int32_t ODP_E_NO_MEMORY = 2;

extern "C" {

// Gets the short identifier of an attribute reference.  Returns 0; ODP_E_REFUSED, with the output unchanged,
// for a reference without a short identifier.
std::int32_t AS_GetAttrIDR(STF_l__hdr *in_status, const AS_attrRef *inp_reference,
                           std::uint32_t *outp_identifier);

// Releases an unpacked access list entry; null is allowed.
void GEN_DeleteExtACL(STF_l__hdr *in_status, GEN_eACL *inp_entry, void *in_allocator);

void GEN_GenToUint64(std::uint64_t *outp_number, const GEN_cardinal64 *inp_value);

} // extern "C"
