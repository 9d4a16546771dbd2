// The memory of one record: everything that hangs from it, released at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ala/log/log_input.h"
#include "service/values.h"

// Allocations are aligned for GEN_string and not cleared.  A zeroed object is a valid, empty one.
struct RecordMemory {
    struct Chunk;

    // Null when memory runs out.
    void *allocate(std::size_t in_size) {
        constexpr std::size_t kAlignment = alignof(GEN_string);
        const std::size_t size = (in_size + kAlignment - 1) / kAlignment * kAlignment;
        if (size > left && !addChunk(size))
            return nullptr;
        std::uint8_t *allocation = next;
        next += size;
        left -= size;
        return allocation;
    }
    void release();

    Chunk *last = nullptr;
    std::uint8_t *next = nullptr; // free memory of the last chunk
    std::size_t left = 0;

private:
    bool addChunk(std::size_t in_size);
};

enum class ReadResult : std::uint8_t { Whole, Cut, NoMemory };

// Reads in_length bytes of a value into the memory.
ReadResult readLongValue(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                         GEN_string *outp_value);

inline ReadResult readValueBytes(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                                 GEN_string *outp_value) {
    if (in_length - 1 >= kTrustedBytes) // a length of 0 as well
        return readLongValue(inoutp_in, in_length, inoutp_memory, outp_value);
    auto *bytes = static_cast<std::uint8_t *>(inoutp_memory.allocate(in_length));
    if (bytes == nullptr)
        return ReadResult::NoMemory;
    if (!inoutp_in.read(bytes, in_length))
        return ReadResult::Cut;
    *outp_value = {static_cast<std::int32_t>(in_length), bytes};
    return ReadResult::Whole;
}
