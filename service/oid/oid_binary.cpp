#include "service/oid/oid_binary.h"

#include <cstddef>

using namespace qvledger;

constexpr std::size_t kMaxContents = OID_BINARY_SIZE - 1;

namespace {

// An arc as a number in base-128 digits, the lowest digit first, as large as the contents octets allow.
class Arc {
public:
    // Sets the number to number * factor + addend; false if the result does not fit.
    bool advance(unsigned factor, unsigned addend) {
        unsigned carry = addend;
        for (std::size_t at = 0; at < count_; ++at) {
            carry += digits_[at] * factor;
            digits_[at] = static_cast<std::uint8_t>(carry & 0x7f);
            carry >>= 7;
        }
        for (; carry != 0; carry >>= 7) {
            if (count_ == kMaxContents)
                return false;
            digits_[count_++] = static_cast<std::uint8_t>(carry & 0x7f);
        }
        return true;
    }

    // REQUIRES: the limit is at most 128.
    bool isBelow(unsigned limit) const { return count_ == 0 || (count_ == 1 && digits_[0] < limit); }
    unsigned lowest() const { return count_ == 0 ? 0 : digits_[0]; }

    // Appends the number to the contents octets, the highest digit first; false if the number does not fit.
    bool encode(OidBinary *binary) const {
        const std::size_t size = count_ == 0 ? 1 : count_;
        std::uint8_t &length = binary->bytes[0];
        if (length + size > kMaxContents)
            return false;
        std::uint8_t *at = binary->bytes + 1 + length;
        for (std::size_t left = size; left > 1; --left)
            *at++ = static_cast<std::uint8_t>(digits_[left - 1] | 0x80U);
        *at = static_cast<std::uint8_t>(lowest());
        length = static_cast<std::uint8_t>(length + size);
        return true;
    }

private:
    std::size_t count_ = 0;
    std::uint8_t digits_[kMaxContents];
};

} // namespace

// Removes one arc and the dot after it from the start of the text; false if the text does not begin with a
// valid arc, or ends with that dot.
static bool takeArc(std::string_view &text, Arc *arc) {
    std::size_t at = 0;
    for (; at < text.size() && text[at] != '.'; ++at) {
        const char digit = text[at];
        if (digit < '0' || digit > '9' || (at == 1 && text[0] == '0'))
            return false;
        if (!arc->advance(10, static_cast<unsigned>(digit - '0')))
            return false;
    }
    if (at == 0 || at + 1 == text.size()) // no digit, or a dot at the end
        return false;
    text.remove_prefix(at == text.size() ? at : at + 1);
    return true;
}

bool qvledger::parseOid(std::string_view decimal, OidBinary *binary) {
    binary->bytes[0] = 0;
    Arc first;
    if (!takeArc(decimal, &first) || !first.isBelow(3) || decimal.empty())
        return false;

    // The first two arcs are encoded as one number.
    Arc second;
    if (!takeArc(decimal, &second) || (first.isBelow(2) && !second.isBelow(40)))
        return false;
    if (!second.advance(1, first.lowest() * 40) || !second.encode(binary))
        return false;

    while (!decimal.empty()) {
        Arc arc;
        if (!takeArc(decimal, &arc) || !arc.encode(binary))
            return false;
    }
    return true;
}
