// The table of value types: which function makes a value's text.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/render/pair.h"
#include "ala/render/value_text.h"
#include "service/packed.h"

namespace qvledger {

// What went wrong with a value: the code, and the log's text with the attribute's decoid as its one argument.
struct RenderFailure {
    ALA_retCode_t code;
    const char *message;
};

// One value on its way to text.
struct Rendering {
    STF_l__hdr *status;
    void **oidHandle;
    const char *locale;
    ALA_timeForm_t timeForm;
    Text text;                // of the target
    const ALA_attrPair *pair; // that the target belongs to
    attributeVal **link;      // where the target hangs in the pair's chain; other values may take its place

    // The text becomes a string from malloc; what was in the buffer goes.
    void replaceText(char *string) { text.replace(string); }
};

// Gives null on success.
using RenderFunction = const RenderFailure *(Rendering &inoutp_rendering, const void *inp_value);

// One row a value type.
struct RenderRow {
    AS_attrValType_t type;
    const char *name;
    RenderFunction *render;
    ALA_valueKind_t kind = ALA_KIND_TEXT; // of what it renders
};

// The row of a type, or null for one that renders as empty text.
const RenderRow *findRenderRow(AS_attrValType_t type);

} // namespace qvledger
