// Memory for the parts of one thing, which come one after the other and go at once, with this object.
//
// It grows in chunks.  The first chunk of the usual size is kept for the next thing of its kind.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "service/spare_block.h"

namespace qvledger {

// Use: a type that tells the kinds apart.  kFirstChunk: bytes of the usual first chunk, with its head.
// kPacked: bytes may lie between what is aligned, and no allocation is empty.
template <class Use, std::size_t kFirstChunk, std::size_t kAlignment, bool kPacked = false>
class ChunkMemory {
public:
    ChunkMemory() = default;
    ~ChunkMemory() { releaseFrom(first); }
    ChunkMemory(const ChunkMemory &) = delete;
    ChunkMemory &operator=(const ChunkMemory &) = delete;

    // Not cleared.  Null when memory runs out.  Unless kPacked, the shortest allocation has an address of its
    // own, too.
    void *allocate(std::size_t size) {
        if constexpr (kPacked) {
            // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): next is null or set
            const std::size_t gap = -reinterpret_cast<std::uintptr_t>(next) % kAlignment;
            next += std::min(gap, static_cast<std::size_t>(end - next));
            return take(size);
        }
        return take((std::max<std::size_t>(size, 1) + kAlignment - 1) / kAlignment * kAlignment);
    }

    // The same at any address.
    void *allocateBytes(std::size_t size) requires kPacked { return take(size); }

    // What the first chunk shall hold if that is more than usual.
    void expect(std::size_t bytes) { expected = bytes; }

    // Leaves the memory to whoever has the first allocation, and takes it back from there; null is fine.
    void handOver() {
        first = nullptr;
        last = nullptr;
        next = nullptr;
        end = nullptr;
    }
    static void releaseFromFirst(void *allocation) {
        if (allocation != nullptr)
            releaseFrom(static_cast<Chunk *>(allocation) - 1);
    }

private:
    struct alignas(std::max_align_t) Chunk {
        Chunk *following;
        std::size_t capacity; // bytes behind this head
    };
    using FirstChunk = SpareBlock<Use, kFirstChunk>;
    static constexpr std::size_t kUsual = kFirstChunk - sizeof(Chunk);
    static constexpr std::size_t kLargest = 256 * 1024; // only what is larger itself gets more

    void *take(std::size_t size) {
        if (size > static_cast<std::size_t>(end - next) && !addChunk(size))
            return nullptr;
        return std::exchange(next, next + size);
    }

    bool addChunk(std::size_t size) {
        const std::size_t usual =
            last == nullptr ? std::max(kUsual, expected) : std::min(2 * last->capacity, kLargest);
        const std::size_t capacity = std::max(usual, size);
        auto *chunk = static_cast<Chunk *>(capacity == kUsual ? FirstChunk::allocate()
                                                              : std::malloc(sizeof(Chunk) + capacity));
        if (chunk == nullptr)
            return false;
        *chunk = {nullptr, capacity};
        (last == nullptr ? first : last->following) = chunk;
        last = chunk;
        next = reinterpret_cast<std::uint8_t *>(chunk + 1);
        end = next + capacity;
        return true;
    }

    static void releaseFrom(Chunk *chunk) {
        while (chunk != nullptr) {
            Chunk *following = chunk->following;
            if (chunk->capacity == kUsual)
                FirstChunk::release(chunk);
            else
                std::free(chunk);
            chunk = following;
        }
    }

    Chunk *first = nullptr;
    Chunk *last = nullptr;
    std::uint8_t *next = nullptr; // free memory of the last chunk
    std::uint8_t *end = nullptr;
    std::size_t expected = 0;
};

} // namespace qvledger
