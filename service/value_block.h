// The memory of one unpacked value.
#pragma once

#include "service/chunk_memory.h"

namespace qvledger {

// Allocations are aligned for every record of service/values.h.  The first one is the value's record, so that
// its address alone finds the whole block again.
class ValueBlock : public ChunkMemory<class OfValues, 512, alignof(std::max_align_t)> {
public:
    // room: bytes that the value will probably need; more are found as they are asked for.
    explicit ValueBlock(std::size_t room) { expect(room); }
};

} // namespace qvledger
