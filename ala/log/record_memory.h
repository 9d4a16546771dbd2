// The memory of one record: everything that hangs from it, released at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ala/log/log_input.h"
#include "service/chunk_memory.h"
#include "service/values.h"

// A record of 20 attributes takes about half of the first chunk.
using RecordMemory = ChunkMemory<class OfRecords, 16 * 1024, alignof(GEN_string), true>;

enum class ReadResult : std::uint8_t { Whole, Cut, NoMemory };

// Reads in_length bytes of a value into the memory.
ReadResult readLongValue(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                         GEN_string *outp_value);

inline ReadResult readValueBytes(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                                 GEN_string *outp_value) {
    if (in_length - 1 >= kTrustedBytes) // a length of 0 as well
        return readLongValue(inoutp_in, in_length, inoutp_memory, outp_value);
    auto *bytes = static_cast<std::uint8_t *>(inoutp_memory.allocateBytes(in_length));
    if (bytes == nullptr)
        return ReadResult::NoMemory;
    if (!inoutp_in.read(bytes, in_length))
        return ReadResult::Cut;
    *outp_value = {static_cast<std::int32_t>(in_length), bytes};
    return ReadResult::Whole;
}
