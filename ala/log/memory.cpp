#include "ala/log/memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "service/spare_block.h"

constexpr std::size_t kFirstChunk = 16 * 1024;    // bytes, with the chunk's head; enough for most records
constexpr std::size_t kLargestChunk = 256 * 1024; // bytes; only what is larger itself gets more

struct alignas(std::max_align_t) RecordMemory::Chunk {
    Chunk *previous;
    std::size_t capacity; // bytes behind the chunk's head
};

using FirstChunk = SpareBlock<class OfRecords, kFirstChunk>;

bool RecordMemory::addChunk(std::size_t in_size) {
    constexpr std::size_t kFirst = kFirstChunk - sizeof(Chunk);
    const std::size_t usual = last == nullptr ? kFirst : std::min(2 * last->capacity, kLargestChunk);
    const std::size_t capacity = std::max(usual, in_size);
    auto *chunk = static_cast<Chunk *>(capacity == kFirst ? FirstChunk::allocate()
                                                          : std::malloc(sizeof(Chunk) + capacity));
    if (chunk == nullptr)
        return false;
    *chunk = {last, capacity};
    last = chunk;
    next = reinterpret_cast<std::uint8_t *>(chunk + 1);
    left = capacity;
    return true;
}

void RecordMemory::release() {
    while (last != nullptr) {
        Chunk *previous = last->previous;
        if (sizeof(Chunk) + last->capacity == kFirstChunk)
            FirstChunk::release(last);
        else
            std::free(last);
        last = previous;
    }
    left = 0;
}

ReadResult readLongValue(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                         GEN_string *outp_value) {
    if (in_length == 0 || in_length > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return ReadResult::Cut; // no value is empty, and none can be longer than its record can say
    std::uint8_t *bytes = nullptr;
    for (std::size_t have = 0, room = kTrustedBytes; have < in_length; room *= 2) {
        const std::size_t wanted = std::min<std::size_t>(in_length, room);
        auto *grown = static_cast<std::uint8_t *>(inoutp_memory.allocate(wanted));
        if (grown == nullptr)
            return ReadResult::NoMemory;
        std::copy_n(bytes, have, grown);
        bytes = grown;
        if (!inoutp_in.read(bytes + have, wanted - have))
            return ReadResult::Cut;
        have = wanted;
    }
    *outp_value = {static_cast<std::int32_t>(in_length), bytes};
    return ReadResult::Whole;
}
