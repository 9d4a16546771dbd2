// One cursor over the bytes of a packed value (XDR, RFC 4506).
//
// Getters never read past the end.  The first thing that does not fit makes the reader fail for good: every
// later getter then gives zero or nothing, and the caller tests once, at the end of the value.
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
    // missing: how many bytes of the value are not there, after those that are.
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
    std::int16_t shortInteger(); // an int from -32768 to 32767
    double real();
    bool present(); // the int before optional data: 0 or 1

    // A counted string of bytes of at most limit, without the fill bytes, which must be zero.
    std::span<const std::uint8_t> bytes(std::size_t limit);

    // The same of a string, in which a NUL is refused.
    std::span<const std::uint8_t> text(std::size_t limit);

    // Bytes, and a string with a NUL behind it, in memory of their own.
    std::uint8_t *copyOfBytes(std::int32_t *length);
    char *characters();

    // A zeroed record in the value's memory; null when there is none left.
    template <class Record>
    Record *make() {
        static_assert(std::is_trivially_destructible_v<Record>);
        void *memory = allocate(sizeof(Record));
        return memory != nullptr ? static_cast<Record *>(std::memset(memory, 0, sizeof(Record))) : nullptr;
    }
    // The same for bytes that are not cleared.
    void *allocate(std::size_t size) {
        if (failed())
            return nullptr;
        void *allocation = memory_.allocate(size);
        if (allocation == nullptr)
            fail(Fault::Memory);
        return allocation;
    }

    // Everything still unread, as it is.
    std::span<const std::uint8_t> remainder() { return std::exchange(rest_, {}); }

    // Could everything be read, and is nothing left?
    bool isWhole() const { return fault_ == Fault::None && rest_.empty(); }
    bool failed() const { return fault_ != Fault::None; }
    bool outOfMemory() const { return fault_ == Fault::Memory; }
    // Did it fail only because the missing bytes are missing?
    bool lacksBytes() const { return fault_ == Fault::Missing; }

private:
    enum class Fault : std::uint8_t { None, Malformed, Missing, Memory };

    void fail(Fault fault);
    // Fails at an item that ends after so many bytes.
    void failAt(std::size_t size) {
        fail(size <= rest_.size() + missing_ ? Fault::Missing : Fault::Malformed);
    }

    std::span<const std::uint8_t> rest_; // nothing once it failed
    ValueMemory &memory_;
    std::size_t missing_;
    Fault fault_ = Fault::None;
};

} // namespace qvledger
