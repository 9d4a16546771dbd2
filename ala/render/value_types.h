// The table of value types: how a packed value of each type is read and rendered as text.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"
#include "ala/base/plain_days.h"
#include "ala/render/value_text.h"
#include "service/packed/packed.h"
#include "service/packed/xdr_reader.h"
#include "service/status.h"

namespace qvledger {

constexpr std::size_t kValueSize = 256; // bytes of the initial buffer for a value's text

// A failed value: the return code, and a log text, which may show the attribute's decoid with %s.
struct RenderFailure {
    ALA_retCode_t code;
    const char *message;
};

// The failure if the bytes are not a value of the type, or if memory ran out while they were read.  Has no
// log text; the cursor logs this failure.
extern const RenderFailure kRefused;

// The data that rendering needs besides the value.
struct RenderContext {
    void **oidHandle;
    ALA_timeForm_t timeForm = ALA_TIME_AS_REPORTED;
    PlainDays *plainDays = nullptr; // null: the C library converts every time
};

// One value while it is rendered.
struct Rendering {
    explicit Rendering(const RenderContext &of) : context(of) {}

    const RenderContext &context;
    StatusList status;
    char room[kValueSize];
    Text text{room, sizeof room};
    std::uint32_t values = 1;   // number of values in the text, which NULs separate
    std::string_view view = {}; // used instead of the text if its data is not null
};

// The functions of a value type.  render and renderPacked return null on success.
struct ValueForm {
    // Unpacks a record into the reader's memory.  Null for an empty chain.  If the reader fails, the result
    // is null or incomplete: call the reader's isWhole().
    void *(*unpack)(XdrReader &inoutp_in);
    const RenderFailure *(*render)(Rendering &inoutp_rendering, const void *inp_record);
    // Unpacks and renders in one step; the calling function gets no record.  Returns kRefused if the bytes
    // are not exactly one valid value, or if memory ran out while they were read.
    const RenderFailure *(*renderPacked)(XdrReader &inoutp_in, Rendering &inoutp_rendering);
};

// One row per value type.
struct ValueType {
    AS_attrValType_t type;
    ValueForm form;
    ALA_valueKind_t kind = ALA_KIND_TEXT; // kind of the rendered text
};

// The row of a type; null for an unknown type, which renders as an empty text.
const ValueType *findValueType(AS_attrValType_t type);

} // namespace qvledger

extern "C" {

// Unpacks in_length bytes into a record of the type, which outp_desc->deleteFunc releases.  The record of an
// unknown type is a copy of the bytes.  *outpp_value is null for an empty chain and on failure.
// Returns 0; ODP_E_REFUSED if the bytes are null or are not exactly one value of the type; or
// ODP_E_NO_MEMORY.
std::int32_t ODP_UnpackAV(STF_l__hdr *in_status, std::int32_t in_length, const void *inp_bytes,
                          AS_attrValType_t in_type, void **outpp_value, AS_attrValDesc_t *outp_desc);

} // extern "C"
