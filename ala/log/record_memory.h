// The memory of one record: everything that hangs from it, released at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ala/log/log_input.h"
#include "service/chunk_memory.h"
#include "service/values.h"

namespace qvledger {

// A record of 20 attributes takes about half of the first chunk.
using RecordMemory = ChunkMemory<class OfRecords, 16 * 1024, alignof(GEN_string), true>;

enum class ReadResult : std::uint8_t { Whole, Cut, NoMemory };

// Reads length bytes of a value into the memory.
ReadResult readLongValue(LogInput &in, std::uint32_t length, RecordMemory &memory, GEN_string *value);

inline ReadResult readValueBytes(LogInput &in, std::uint32_t length, RecordMemory &memory,
                                 GEN_string *value) {
    if (length - 1 >= kTrustedBytes) // a length of 0 as well
        return readLongValue(in, length, memory, value);
    auto *bytes = static_cast<std::uint8_t *>(memory.allocateBytes(length));
    if (bytes == nullptr)
        return ReadResult::NoMemory;
    if (!in.read(bytes, length))
        return ReadResult::Cut;
    *value = {static_cast<std::int32_t>(length), bytes};
    return ReadResult::Whole;
}

} // namespace qvledger
