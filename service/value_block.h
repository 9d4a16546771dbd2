// The memory of one unpacked value: a chain of chunks that grows as the value is read and goes at once.
#pragma once

#include <cstddef>
#include <cstdint>

// Allocations are zeroed and aligned for every record of service/values.h.  The first one lies at the start
// of the first chunk, so that its address alone finds the whole block again.
class ValueBlock {
public:
    // in_expected: bytes that the value will probably need; more are found as they are asked for.
    explicit ValueBlock(std::size_t in_expected) : expected(in_expected) {}
    ~ValueBlock() { release(first); }
    ValueBlock(const ValueBlock &) = delete;
    ValueBlock &operator=(const ValueBlock &) = delete;

    // Null when memory runs out.
    void *allocate(std::size_t in_size);

    // Hands the chunks to the owner of the first allocation, who releases them with releaseValue.
    void handOver() { first = nullptr; }
    static void releaseValue(void *inp_firstAllocation);

private:
    struct Chunk;
    static void release(Chunk *inp_chunk);

    std::size_t expected;
    Chunk *first = nullptr;
    Chunk *last = nullptr;
};
