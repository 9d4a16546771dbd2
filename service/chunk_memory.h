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
    void *allocate(std::size_t in_size) {
        if constexpr (kPacked) {
            // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): next is null or set
            const std::size_t gap = -reinterpret_cast<std::uintptr_t>(next) % kAlignment;
            next += std::min(gap, static_cast<std::size_t>(end - next));
            return take(in_size);
        }
        return take((std::max<std::size_t>(in_size, 1) + kAlignment - 1) / kAlignment * kAlignment);
    }

    // The same at any address.
    void *allocateBytes(std::size_t in_size) requires kPacked { return take(in_size); }

    // What the first chunk shall hold if that is more than usual.
    void expect(std::size_t in_bytes) { expected = in_bytes; }

    // Leaves the memory to whoever has the first allocation, and takes it back from there; null is fine.
    void handOver() {
        first = nullptr;
        last = nullptr;
        next = nullptr;
        end = nullptr;
    }
    static void releaseFromFirst(void *inp_allocation) {
        if (inp_allocation != nullptr)
            releaseFrom(static_cast<Chunk *>(inp_allocation) - 1);
    }

private:
    struct alignas(std::max_align_t) Chunk {
        Chunk *following;
        std::size_t capacity; // bytes behind this head
    };
    using FirstChunk = SpareBlock<Use, kFirstChunk>;
    static constexpr std::size_t kUsual = kFirstChunk - sizeof(Chunk);
    static constexpr std::size_t kLargest = 256 * 1024; // only what is larger itself gets more

    void *take(std::size_t in_size) {
        if (in_size > static_cast<std::size_t>(end - next) && !addChunk(in_size))
            return nullptr;
        return std::exchange(next, next + in_size);
    }

    bool addChunk(std::size_t in_size) {
        const std::size_t usual =
            last == nullptr ? std::max(kUsual, expected) : std::min(2 * last->capacity, kLargest);
        const std::size_t capacity = std::max(usual, in_size);
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

    static void releaseFrom(Chunk *inp_chunk) {
        while (inp_chunk != nullptr) {
            Chunk *following = inp_chunk->following;
            if (inp_chunk->capacity == kUsual)
                FirstChunk::release(inp_chunk);
            else
                std::free(inp_chunk);
            inp_chunk = following;
        }
    }

    Chunk *first = nullptr;
    Chunk *last = nullptr;
    std::uint8_t *next = nullptr; // free memory of the last chunk
    std::uint8_t *end = nullptr;
    std::size_t expected = 0;
};
