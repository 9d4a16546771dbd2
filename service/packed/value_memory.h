// The memory of one unpacked value's parts.  All parts are released together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <span>
#include <utility>

namespace qvledger {

class ValueMemory {
public:
    // Allocations first use `room`, which is not released.  REQUIRES: the room outlives this object and is
    // aligned for every type.
    explicit ValueMemory(std::span<std::byte> room = {})
        : next_(room.data()), end_(room.data() + room.size()) {}
    ~ValueMemory() { releaseFrom(first_); }
    ValueMemory(const ValueMemory &) = delete;
    ValueMemory &operator=(const ValueMemory &) = delete;

    // Returns uninitialised memory, aligned for every type and with its own address even for size 0; null
    // when memory runs out.
    void *allocate(std::size_t size) {
        constexpr std::size_t kUnit = alignof(std::max_align_t);
        const std::size_t units = (std::max<std::size_t>(size, 1) + kUnit - 1) / kUnit * kUnit;
        if (units > static_cast<std::size_t>(end_ - next_) && !addChunk(units))
            return nullptr;
        return std::exchange(next_, next_ + units);
    }

    // handOver() passes the ownership of all memory to the calling function, which releases the memory by
    // passing the address of the first allocation, or null, to release().  REQUIRES: the constructor was
    // called without `room`.
    void handOver() { first_ = nullptr; }
    static void release(void *firstAllocation) {
        if (firstAllocation != nullptr)
            releaseFrom(static_cast<Chunk *>(firstAllocation) - 1);
    }

private:
    struct alignas(std::max_align_t) Chunk {
        Chunk *following;
    };

    bool addChunk(std::size_t size) {
        constexpr std::size_t kSmallest = 512;
        constexpr std::size_t kLargest = 256 * 1024; // a larger allocation gets a chunk of exactly its size
        usual_ = std::clamp(2 * usual_, kSmallest, kLargest);
        const std::size_t capacity = std::max(usual_, size);
        auto *chunk = static_cast<Chunk *>(std::malloc(sizeof(Chunk) + capacity));
        if (chunk == nullptr)
            return false;
        chunk->following = nullptr;
        (first_ == nullptr ? first_ : last_->following) = chunk;
        last_ = chunk;
        next_ = reinterpret_cast<std::byte *>(chunk + 1);
        end_ = next_ + capacity;
        return true;
    }

    static void releaseFrom(Chunk *chunk) {
        while (chunk != nullptr)
            std::free(std::exchange(chunk, chunk->following));
    }

    Chunk *first_ = nullptr;
    Chunk *last_ = nullptr;
    std::byte *next_; // start of the free memory
    std::byte *end_;
    std::size_t usual_ = 0; // bytes of a usual chunk; doubles with each chunk up to kLargest
};

} // namespace qvledger
