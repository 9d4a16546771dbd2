// Object identifiers as dotted-decimal text and as contents octets.
#pragma once

#include <cstdint>
#include <string_view>

#include "service/oid/oid.h"

namespace qvledger {

// A length byte and the contents octets of X.690 8.19.
struct OidBinary {
    std::uint8_t bytes[OID_BINARY_SIZE];
};

// Converts dotted-decimal text to a binary OID.  Returns false, with the output undefined, if the text is not
// an identifier or does not fit.  An identifier has at least two arcs.  The first arc is 0 to 2; after 0 or
// 1, the second arc is below 40.  No arc has a leading zero.  An arc may be as large as the contents octets
// allow.
bool parseOid(std::string_view decimal, OidBinary *binary);

} // namespace qvledger
