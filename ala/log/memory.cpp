#include "ala/log/memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

constexpr std::size_t kFirstChunk = 4 * 1024;     // bytes; enough for most records
constexpr std::size_t kLargestChunk = 256 * 1024; // bytes; only what is larger itself gets more

struct alignas(std::max_align_t) RecordMemory::Chunk {
    Chunk *previous;
    std::size_t capacity; // bytes behind the chunk's head
    std::size_t used;
};

void *RecordMemory::allocate(std::size_t in_size) {
    constexpr std::size_t kAlignment = alignof(GEN_string);
    const std::size_t size = (in_size + kAlignment - 1) / kAlignment * kAlignment;
    if (last == nullptr || last->capacity - last->used < size) {
        const std::size_t usual = last == nullptr ? kFirstChunk : std::min(2 * last->capacity, kLargestChunk);
        const std::size_t capacity = std::max(usual, size);
        auto *chunk = static_cast<Chunk *>(std::malloc(sizeof(Chunk) + capacity));
        if (chunk == nullptr)
            return nullptr;
        *chunk = {last, capacity, 0};
        last = chunk;
    }
    void *allocation = reinterpret_cast<std::uint8_t *>(last + 1) + last->used;
    last->used += size;
    return allocation;
}

void RecordMemory::release() {
    while (last != nullptr) {
        Chunk *previous = last->previous;
        std::free(last);
        last = previous;
    }
}

ReadResult readValueBytes(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                          GEN_string *outp_value) {
    if (in_length == 0 || in_length > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return ReadResult::Cut; // no value is empty, and none can be longer than its record can say
    std::size_t room = std::min<std::size_t>(in_length, kTrustedBytes);
    auto *bytes = static_cast<std::uint8_t *>(inoutp_memory.allocate(room));
    for (std::size_t have = 0;;) {
        if (bytes == nullptr)
            return ReadResult::NoMemory;
        if (!inoutp_in.read(bytes + have, room - have))
            return ReadResult::Cut;
        have = room;
        if (have == in_length)
            break;
        room = std::min<std::size_t>(in_length, 2 * room);
        auto *grown = static_cast<std::uint8_t *>(inoutp_memory.allocate(room));
        if (grown != nullptr)
            std::memcpy(grown, bytes, have);
        bytes = grown;
    }
    *outp_value = {static_cast<std::int32_t>(in_length), bytes};
    return ReadResult::Whole;
}
