// The memory of one unpacked value: a chain of chunks that grows as the value is read and goes at once.
#pragma once

#include <cstddef>
#include <cstdint>

// Allocations are aligned for every record of service/values.h.  The first one lies at the start of the first
// chunk, so that its address alone finds the whole block again.
class ValueBlock {
public:
    // in_expected: bytes that the value will probably need; more are found as they are asked for.
    explicit ValueBlock(std::size_t in_expected) : expected(in_expected) {}
    ~ValueBlock() { release(first); }
    ValueBlock(const ValueBlock &) = delete;
    ValueBlock &operator=(const ValueBlock &) = delete;

    // Not cleared.  Null when memory runs out.
    void *allocate(std::size_t in_size) {
        const std::size_t size = roundUp(in_size);
        if (size > left && !addChunk(size))
            return nullptr;
        std::uint8_t *allocation = next;
        next += size;
        left -= size;
        return allocation;
    }

    // Hands the chunks to the owner of the first allocation, who releases them with releaseValue.
    void handOver() { first = nullptr; }
    static void releaseValue(void *inp_firstAllocation);

private:
    struct Chunk;

    // The shortest allocation still has an address of its own.
    static std::size_t roundUp(std::size_t in_size) {
        constexpr std::size_t kAlignment = alignof(std::max_align_t);
        return (in_size + kAlignment - (in_size != 0 ? 1 : 0)) / kAlignment * kAlignment;
    }
    bool addChunk(std::size_t in_size);
    static void release(Chunk *inp_chunk);

    std::size_t expected;
    Chunk *first = nullptr;
    Chunk *last = nullptr;
    std::uint8_t *next = nullptr; // free memory of the last chunk
    std::size_t left = 0;
};
