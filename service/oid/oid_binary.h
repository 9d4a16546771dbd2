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

// Converts an identifier: at least two arcs, the first 0 to 2, the second below 40 after 0 and 1; no arc has
// a leading zero, and an arc may be as large as the contents octets allow.  False, with the output undefined,
// for any other text and one that does not fit.
bool parseOid(std::string_view decimal, OidBinary *binary);

} // namespace qvledger
