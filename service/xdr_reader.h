// One cursor over the bytes of a packed value (XDR, RFC 4506).
//
// Getters never read past the end.  The first thing that does not fit makes the reader fail for good: every
// later getter then gives zero or nothing, and the caller tests once, at the end of the value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "service/value_block.h"

class XdrReader {
public:
    XdrReader(std::span<const std::uint8_t> in_bytes, ValueBlock &in_block)
        : rest(in_bytes), block(in_block) {}

    std::uint32_t word();
    std::int32_t integer() { return static_cast<std::int32_t>(word()); }
    std::int16_t shortInteger(); // an int from -32768 to 32767
    double real();
    bool present(); // the int before optional data: 0 or 1

    // A counted string of bytes of at most in_limit, without the fill bytes, which must be zero.
    std::span<const std::uint8_t> bytes(std::size_t in_limit);

    // The same in memory of its own; characters() adds a NUL and refuses one inside.
    std::uint8_t *copyOfBytes(std::int32_t *outp_length);
    char *characters();

    // A zeroed record in the value's memory; null when there is none left.
    template <class Record>
    Record *make() {
        static_assert(std::is_trivially_destructible_v<Record>);
        return static_cast<Record *>(allocate(sizeof(Record)));
    }
    void *allocate(std::size_t in_size);

    // Everything still unread, as it is.
    std::span<const std::uint8_t> remainder() { return take(rest.size()); }

    bool failed() const { return fault != Fault::None; }
    bool outOfMemory() const { return fault == Fault::Memory; }
    bool atEnd() const { return rest.empty(); }

private:
    enum class Fault : std::uint8_t { None, Malformed, Memory };

    std::span<const std::uint8_t> take(std::size_t in_size);
    void fail(Fault in_fault);

    std::span<const std::uint8_t> rest;
    ValueBlock &block;
    Fault fault = Fault::None;
};
