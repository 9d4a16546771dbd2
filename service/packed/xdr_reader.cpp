#include "service/packed/xdr_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

using namespace qvledger;

constexpr std::size_t kUnit = 4; // every XDR item takes a multiple of this many bytes

void XdrReader::fail(Fault reason) {
    if (!failed())
        fault_ = reason;
    rest_ = {};
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

// Are the last `count` bytes (0 to 3) of the units zero?  Uses no loop, because the loop's branches would be
// mispredicted.
static bool endsInZeros(std::span<const std::uint8_t> units, std::size_t count) {
    if (units.empty())
        return true;
    std::uint32_t last = 0;
    std::memcpy(&last, units.last(kUnit).data(), kUnit);
    return (fromNetworkOrder(last) & ((1U << 8 * count) - 1)) == 0;
}

std::span<const std::uint8_t> XdrReader::bytes(std::size_t limit) {
    const std::size_t length = word();
    const std::size_t padded = (length + kUnit - 1) / kUnit * kUnit;
    if (length <= limit && padded > rest_.size()) {
        failAt(padded);
        return {};
    }
    if (length > limit || !endsInZeros(rest_.first(padded), padded - length)) {
        fail(Fault::Malformed);
        return {};
    }
    const std::span<const std::uint8_t> text = rest_.first(length);
    rest_ = rest_.subspan(padded);
    return text;
}

std::uint8_t *XdrReader::copyOfBytes(std::int32_t *length) {
    const std::span<const std::uint8_t> text = bytes(std::numeric_limits<std::int32_t>::max());
    auto *copy = static_cast<std::uint8_t *>(allocate(text.size()));
    if (copy == nullptr)
        return nullptr;
    std::copy(text.begin(), text.end(), copy);
    *length = static_cast<std::int32_t>(text.size());
    return copy;
}

std::span<const std::uint8_t> XdrReader::text(std::size_t limit) {
    const std::span<const std::uint8_t> text = bytes(limit);
    if (text.empty() || std::memchr(text.data(), 0, text.size()) == nullptr)
        return text;
    fail(Fault::Malformed);
    return {};
}

char *XdrReader::characters() {
    const std::span<const std::uint8_t> read = text(std::numeric_limits<std::int32_t>::max());
    auto *copy = static_cast<char *>(allocate(read.size() + 1));
    if (copy == nullptr)
        return nullptr;
    if (!read.empty())
        std::memcpy(copy, read.data(), read.size());
    copy[read.size()] = '\0';
    return copy;
}
