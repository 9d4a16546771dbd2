#include "service/value_block.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "service/spare_block.h"

struct alignas(std::max_align_t) ValueBlock::Chunk {
    Chunk *next;
    std::size_t capacity; // bytes behind the chunk's head
};

// Most values fit into a block of this many bytes.
constexpr std::size_t kUsualBlock = 512;
using UsualBlock = SpareBlock<class OfValues, kUsualBlock>;

bool ValueBlock::addChunk(std::size_t in_size) {
    constexpr std::size_t kUsual = kUsualBlock - sizeof(Chunk);
    const std::size_t wanted = last == nullptr ? roundUp(expected) : 2 * last->capacity;
    const std::size_t capacity = std::max({wanted, in_size, kUsual});
    auto *chunk = static_cast<Chunk *>(capacity == kUsual ? UsualBlock::allocate()
                                                          : std::malloc(sizeof(Chunk) + capacity));
    if (chunk == nullptr)
        return false;
    *chunk = {nullptr, capacity};
    (last == nullptr ? first : last->next) = chunk;
    last = chunk;
    next = reinterpret_cast<std::uint8_t *>(chunk + 1);
    left = capacity;
    return true;
}

void ValueBlock::release(Chunk *inp_chunk) {
    while (inp_chunk != nullptr) {
        Chunk *following = inp_chunk->next;
        if (sizeof(Chunk) + inp_chunk->capacity == kUsualBlock)
            UsualBlock::release(inp_chunk);
        else
            std::free(inp_chunk);
        inp_chunk = following;
    }
}

void ValueBlock::releaseValue(void *inp_firstAllocation) {
    if (inp_firstAllocation != nullptr)
        release(static_cast<Chunk *>(inp_firstAllocation) - 1);
}
