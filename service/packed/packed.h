// ODP_UnpackAV: packed attribute values into the records of service/packed/values.h.
//
// The packed form is XDR (RFC 4506); service/packed/values.x describes it and docs/formats.md describes what
// it leaves open.  A value's record lives in one allocation, or a few, that deleteFunc releases.
#pragma once

#include <cstdint>

#include "service/packed/values.h"
#include "service/status.h"

// How to release an unpacked value: deleteFunc takes the value that came with it.  copyFunc is always null,
// as nobody copies values.
struct AS_attrValDesc_t {
    void *(*copyFunc)(STF_l__hdr *in_status, const void *inp_value, void *in_allocator);
    void (*deleteFunc)(STF_l__hdr *in_status, void *inp_value, void *in_allocator);
};

using AS_attrValType_t = std::uint32_t;

// The value type of an access list entry, GEN_eACL.
constexpr AS_attrValType_t AS_ACCESS_LIST_ENTRY = 7;

// Failure codes, all non-zero.
constexpr std::int32_t ODP_E_REFUSED = 1; // the bytes are no value of that type
constexpr std::int32_t ODP_E_NO_MEMORY = 2;

extern "C" {

// The short identifier that an attribute reference holds; non-zero when it is in another form.
std::int32_t AS_GetAttrIDR(STF_l__hdr *in_status, const AS_attrRef *inp_reference,
                           std::uint32_t *outp_identifier);

void GEN_DeleteExtACL(STF_l__hdr *in_status, GEN_eACL *inp_entry, void *in_allocator);

void GEN_GenToUint64(std::uint64_t *outp_number, const GEN_cardinal64 *inp_value);

} // extern "C"
