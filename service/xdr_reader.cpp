#include "service/xdr_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

constexpr std::size_t kUnit = 4; // every XDR item takes a multiple of this many bytes

void XdrReader::fail(Fault in_fault) {
    if (!failed())
        fault = in_fault;
    rest = {};
}

std::span<const std::uint8_t> XdrReader::take(std::size_t in_size) {
    if (failed() || rest.size() < in_size) {
        fail(Fault::Malformed);
        return {};
    }
    const std::span<const std::uint8_t> taken = rest.first(in_size);
    rest = rest.subspan(in_size);
    return taken;
}

std::uint32_t XdrReader::word() {
    const std::span<const std::uint8_t> b = take(kUnit);
    if (b.empty())
        return 0;
    return static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
           static_cast<std::uint32_t>(b[2]) << 8 | b[3];
}

std::int16_t XdrReader::shortInteger() {
    const std::int32_t wide = integer();
    const auto narrow = static_cast<std::int16_t>(wide);
    if (narrow != wide)
        fail(Fault::Malformed);
    return narrow;
}

double XdrReader::real() {
    const std::uint64_t high = word();
    return std::bit_cast<double>(high << 32 | word());
}

bool XdrReader::present() {
    const std::uint32_t presence = word();
    if (presence > 1)
        fail(Fault::Malformed);
    return presence == 1;
}

std::span<const std::uint8_t> XdrReader::bytes(std::size_t in_limit) {
    const std::size_t length = word();
    if (length > in_limit || length > rest.size()) {
        fail(Fault::Malformed);
        return {};
    }
    const std::span<const std::uint8_t> text = take(length);
    const std::span<const std::uint8_t> fill = take((kUnit - length % kUnit) % kUnit);
    if (std::any_of(fill.begin(), fill.end(), [](std::uint8_t b) { return b != 0; }))
        fail(Fault::Malformed);
    return failed() ? std::span<const std::uint8_t>() : text;
}

std::uint8_t *XdrReader::copyOfBytes(std::int32_t *outp_length) {
    const std::span<const std::uint8_t> text = bytes(std::numeric_limits<std::int32_t>::max());
    auto *copy = static_cast<std::uint8_t *>(allocate(text.size()));
    if (copy == nullptr)
        return nullptr;
    std::copy(text.begin(), text.end(), copy);
    *outp_length = static_cast<std::int32_t>(text.size());
    return copy;
}

char *XdrReader::characters() {
    const std::span<const std::uint8_t> text = bytes(std::numeric_limits<std::int32_t>::max());
    if (!text.empty() && std::memchr(text.data(), 0, text.size()) != nullptr)
        fail(Fault::Malformed);
    auto *copy = static_cast<char *>(allocate(text.size() + 1));
    if (copy != nullptr)
        std::copy(text.begin(), text.end(), copy); // the NUL is there: allocations are zeroed
    return copy;
}

void *XdrReader::allocate(std::size_t in_size) {
    if (failed())
        return nullptr;
    void *allocation = block.allocate(in_size);
    if (allocation == nullptr)
        fail(Fault::Memory);
    return allocation;
}
