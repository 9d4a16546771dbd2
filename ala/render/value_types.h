// The table of value types: how a packed value of each is read, and how it becomes text.
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

constexpr std::size_t kValueSize = 256; // bytes of the buffer in which a value's text begins

// What went wrong with a value: the code, and the log's text with the attribute's decoid as its one argument.
struct RenderFailure {
    ALA_retCode_t code;
    const char *message;
};

// The bytes are not a value of the type, or memory ran out while they were read; the log's text is the
// caller's.
extern const RenderFailure kRefused;

// What rendering needs to know beside the value.
struct RenderContext {
    void **oidHandle;
    ALA_timeForm_t timeForm = ALA_TIME_AS_REPORTED;
    PlainDays *plainDays = nullptr; // null: every time is converted
};

// One value on its way to text.
struct Rendering {
    explicit Rendering(const RenderContext &of) : context(of) {}

    const RenderContext &context;
    StatusList status;
    char room[kValueSize];
    Text text{room, sizeof room};
    std::uint32_t values = 1;   // that the text has, with a NUL between them
    std::string_view view = {}; // the text instead, if it has data
};

// The functions of a type.  Those that render give null on success.
struct ValueForm {
    // The record in the reader's memory; null for an empty chain, and if the reader failed.
    void *(*unpack)(XdrReader &inoutp_in);
    const RenderFailure *(*render)(Rendering &inoutp_rendering, const void *inp_record);
    // Both in one, without a record that outlives the call.  Also kRefused.
    const RenderFailure *(*renderPacked)(XdrReader &inoutp_in, Rendering &inoutp_rendering);
};

// One row a value type.
struct ValueType {
    AS_attrValType_t type;
    ValueForm form;
    ALA_valueKind_t kind = ALA_KIND_TEXT; // of what it renders
};

// The row of a type; null for one that the system does not know, which renders as empty text.
const ValueType *findValueType(AS_attrValType_t type);

} // namespace qvledger

extern "C" {

// in_length bytes into a record of the type, which outp_desc->deleteFunc releases.  *outpp_value is null for
// an empty chain, and on failure.  A type that the system does not know takes its bytes as they are.  0,
// ODP_E_REFUSED or ODP_E_NO_MEMORY.
std::int32_t ODP_UnpackAV(STF_l__hdr *in_status, std::int32_t in_length, const void *inp_bytes,
                          AS_attrValType_t in_type, void **outpp_value, AS_attrValDesc_t *outp_desc);

} // extern "C"
