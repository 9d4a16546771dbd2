// A pair of an attribute's name and its values: how it lies in memory, its making and its release.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "ala/ala.h"
#include "ala/render/value_text.h"
#include "service/oid.h"
#include "service/packed.h"

namespace qvledger {

constexpr std::size_t kValueSize = 256; // bytes of the buffer in which a value's text begins

} // namespace qvledger

// A value with its text behind it; a longer one has memory of its own.  The node is first, so that its
// address is this record's.  Further values of a pair have as much of the room as their texts take.
struct ALA__roomyValue {
    attributeVal node;
    char text[qvledger::kValueSize];
};

// A pair with its name and its first value in one piece.  It remembers its last value, so that appending
// costs the same however many there are, and what type its values have.
struct ALA__growingPair {
    ALA_attrPair pair; // what the caller sees; first, so that its address is this record's
    attributeVal *last;
    AS_attrValType_t type; // of the values
    char name[OID_NAME_SIZE];
    ALA__roomyValue first;
};

// A new pair with one empty value, and the attribute's name, which lies in the pair and which the caller
// makes known there.  The known name is taken if it has data, else that of the object identifier, which may
// be null before.  A locale that is not null stays set on the database handle.  ALA_A_OUT_OF_MEMORY,
// ALA_A_OID_ERROR: both outputs are null.
ALA_retCode_t ALA__LookupAttrNameFromOID(const std::uint8_t *in_oid, std::string_view in_knownName,
                                         const char *inp_locale, void **inoutp_oidHandle,
                                         ALA_attrPair **outp_attribute, char **outpp_attrName);

// A value that takes over a text, and no memory beyond what that needs.  0, or ALA_A_OUT_OF_MEMORY with the
// variable null.
ALA_retCode_t ALA__AllocValue(attributeVal **outpp_val, qvledger::Text &inoutp_text);

// Releases a value and its text, but for what is a part of the pair.
void ALA__FreeValue(const ALA_attrPair *inp_pair, attributeVal *inp_value);

namespace qvledger {

// Releases a pair with its values and its name.  Its last block is kept for the next one.
struct PairDeleter {
    void operator()(ALA__growingPair *pair) const;
};
using OwnedPair = std::unique_ptr<ALA__growingPair, PairDeleter>;

} // namespace qvledger
