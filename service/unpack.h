// One row per value type: how its packed form becomes its record.
#pragma once

#include <cstddef>
#include <cstdint>

#include "service/packed.h"
#include "service/xdr_reader.h"

namespace qvledger {

struct UnpackRow {
    AS_attrValType_t type;
    std::size_t size; // bytes of the record, or of a chain's element
    void *(*unpack)(
        XdrReader &inoutp_in); // the record, or null once the reader failed and for an empty chain
};

// The row of a type; for one that the system does not know, the row that takes the bytes as they are.
const UnpackRow &findUnpackRow(AS_attrValType_t type);

} // namespace qvledger
