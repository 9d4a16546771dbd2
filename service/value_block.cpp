#include "service/value_block.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

struct alignas(std::max_align_t) ValueBlock::Chunk {
    Chunk *next;
    std::size_t capacity; // bytes behind the chunk's head
    std::size_t used;

    std::uint8_t *bytes() { return reinterpret_cast<std::uint8_t *>(this + 1); }
};

static std::size_t roundUp(std::size_t in_size) {
    constexpr std::size_t kAlignment = alignof(std::max_align_t);
    return (in_size + kAlignment - 1) / kAlignment * kAlignment;
}

void *ValueBlock::allocate(std::size_t in_size) {
    // The shortest allocation still has an address of its own.
    const std::size_t size = roundUp(std::max<std::size_t>(in_size, 1));
    if (last == nullptr || last->capacity - last->used < size) {
        const std::size_t wanted = last == nullptr ? roundUp(expected) : 2 * last->capacity;
        const std::size_t capacity = std::max(wanted, size);
        auto *chunk = static_cast<Chunk *>(std::malloc(sizeof(Chunk) + capacity));
        if (chunk == nullptr)
            return nullptr;
        *chunk = {nullptr, capacity, 0};
        (last == nullptr ? first : last->next) = chunk;
        last = chunk;
    }
    void *allocation = last->bytes() + last->used;
    last->used += size;
    return std::memset(allocation, 0, size);
}

void ValueBlock::release(Chunk *inp_chunk) {
    while (inp_chunk != nullptr) {
        Chunk *next = inp_chunk->next;
        std::free(inp_chunk);
        inp_chunk = next;
    }
}

void ValueBlock::releaseValue(void *inp_firstAllocation) {
    if (inp_firstAllocation != nullptr)
        release(static_cast<Chunk *>(inp_firstAllocation) - 1);
}
