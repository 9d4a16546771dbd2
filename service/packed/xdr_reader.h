// A cursor over the bytes of a packed value (XDR, RFC 4506).
//
// Getters never read past the end.  An invalid or incomplete item makes the reader fail permanently: all
// later getters return zero or nothing, so it is enough to check for a failure once, at the end of the value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include "platform/byte_order.h"
#include "service/packed/value_memory.h"

namespace qvledger {

class XdrReader {
public:
    // missing: number of bytes that were cut off the end of the value.
    XdrReader(std::span<const std::uint8_t> bytes, ValueMemory &memory, std::size_t missing = 0)
        : rest_(bytes), memory_(memory), missing_(missing) {}

    std::uint32_t word() {
        std::uint32_t word = 0;
        if (rest_.size() < sizeof word) {
            failAt(sizeof word);
            return 0;
        }
        std::memcpy(&word, rest_.data(), sizeof word);
        rest_ = rest_.subspan(sizeof word);
        return fromNetworkOrder(word);
    }
    std::int32_t integer() { return static_cast<std::int32_t>(word()); }
    std::int16_t shortInteger(); // reads an int, which must be -32768 to 32767
    double real();
    bool present(); // reads the int before optional data, which must be 0 or 1

    // Reads a count and that many bytes, and returns the bytes without their fill bytes.  Fails if the count
    // is above limit, bytes are missing or a fill byte is not zero.
    std::span<const std::uint8_t> bytes(std::size_t limit);

    // Like bytes(), but for a string; fails if the string contains a NUL.
    std::span<const std::uint8_t> text(std::size_t limit);

    // Read bytes or a string, and return a copy in the value's memory; null on failure.  A NUL ends the copy
    // of a string.
    std::uint8_t *copyOfBytes(std::int32_t *length);
    char *characters();

    // Makes a zeroed record in the value's memory; null on failure.
    template <class Record>
    Record *make() {
        static_assert(std::is_trivially_destructible_v<Record>);
        void *memory = allocate(sizeof(Record));
        return memory != nullptr ? static_cast<Record *>(std::memset(memory, 0, sizeof(Record))) : nullptr;
    }
    // Like make(), but for uninitialised bytes.
    void *allocate(std::size_t size) {
        if (failed())
            return nullptr;
        void *allocation = memory_.allocate(size);
        if (allocation == nullptr)
            fail(Fault::Memory);
        return allocation;
    }

    // Takes all unread bytes.
    std::span<const std::uint8_t> remainder() { return std::exchange(rest_, {}); }

    // Were all bytes read without failure?
    bool isWhole() const { return fault_ == Fault::None && rest_.empty(); }
    bool failed() const { return fault_ != Fault::None; }
    bool outOfMemory() const { return fault_ == Fault::Memory; }
    // Did the reader fail only because the value's end is missing?
    bool lacksBytes() const { return fault_ == Fault::Missing; }

private:
    enum class Fault : std::uint8_t { None, Malformed, Missing, Memory };

    void fail(Fault fault);
    // Fails because an item has `size` bytes, but fewer bytes are unread.
    void failAt(std::size_t size) {
        fail(size <= rest_.size() + missing_ ? Fault::Missing : Fault::Malformed);
    }

    std::span<const std::uint8_t> rest_; // empty after a failure
    ValueMemory &memory_;
    std::size_t missing_;
    Fault fault_ = Fault::None;
};

} // namespace qvledger
