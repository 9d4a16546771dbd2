// The memory of one record: everything that hangs from it, released at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ala/log/log_input.h"
#include "service/values.h"

// Allocations are aligned for GEN_string and not cleared.  A zeroed object is a valid, empty one.
struct RecordMemory {
    struct Chunk;

    void *allocate(std::size_t in_size); // null when memory runs out
    void release();

    Chunk *last = nullptr;
};

enum class ReadResult : std::uint8_t { Whole, Cut, NoMemory };

// Reads in_length bytes of a value into the memory.
ReadResult readValueBytes(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                          GEN_string *outp_value);
