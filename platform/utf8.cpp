#include "platform/utf8.h"

using namespace qvledger;

constexpr char32_t kLastCharacter = 0x10FFFF;

static bool isStrayByte(char32_t number) {
    return number >= kStrayByte + 0x80 && number <= kStrayByte + 0xFF;
}

static unsigned char byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

std::size_t qvledger::utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const auto isTail = [&](std::size_t at) { return (byte(at) & 0xC0) == 0x80; };
    const unsigned first = byte(0);
    const unsigned second = byte(1);
    if (first < 0x80)
        return 1;
    if (first < 0xC2 || first > 0xF4 || !isTail(1))
        return 0;
    if (first < 0xE0)
        return 2;
    if (first < 0xF0) {
        const bool isCharacter = !(first == 0xE0 && second < 0xA0) && !(first == 0xED && second > 0x9F);
        return isCharacter && isTail(2) ? 3 : 0;
    }
    const bool isCharacter = !(first == 0xF0 && second < 0x90) && !(first == 0xF4 && second > 0x8F);
    return isCharacter && isTail(2) && isTail(3) ? 4 : 0;
}

bool qvledger::isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

// Decodes one character: the bits of the first byte after its length prefix, then six bits of each further
// byte.
static char32_t characterIn(std::string_view bytes) {
    const unsigned leadMask = bytes.size() == 1 ? 0x7F : 0x7FU >> bytes.size();
    char32_t character = byteAt(bytes, 0) & leadMask;
    for (std::size_t i = 1; i < bytes.size(); ++i)
        character = character << 6 | (byteAt(bytes, i) & 0x3F);
    return character;
}

char32_t qvledger::takeUtf8(std::string_view &text) {
    const std::size_t length = utf8Length(text);
    const char32_t character =
        length != 0 ? characterIn(text.substr(0, length)) : kStrayByte + byteAt(text, 0);
    text.remove_prefix(length != 0 ? length : 1);
    return character;
}

bool qvledger::appendUtf8(std::string &text, char32_t character) {
    if (isStrayByte(character)) {
        text.push_back(static_cast<char>(character - kStrayByte));
        return true;
    }
    if (isSurrogate(character) || character > kLastCharacter)
        return false;
    constexpr unsigned kLeads[] = {0, 0xC0, 0xE0, 0xF0}; // indexed by the number of further bytes
    const unsigned tails = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    unsigned shift = 6 * tails;
    text.push_back(static_cast<char>(kLeads[tails] | character >> shift));
    while (shift != 0) {
        shift -= 6;
        text.push_back(static_cast<char>(0x80 | (character >> shift & 0x3F)));
    }
    return true;
}

std::string qvledger::utf8FromUtf16(std::string_view bytes, bool bigEndian) {
    const std::size_t units = bytes.size() / 2;
    const auto unitAt = [&](std::size_t index) -> char32_t {
        const char32_t first = byteAt(bytes, 2 * index);
        const char32_t second = byteAt(bytes, 2 * index + 1);
        return bigEndian ? first << 8 | second : second << 8 | first;
    };
    std::string text;
    text.reserve(units);
    for (std::size_t i = 0; i < units; ++i) {
        char32_t character = unitAt(i);
        if (character >= 0xD800 && character <= 0xDBFF && i + 1 < units && (unitAt(i + 1) & 0xFC00) == 0xDC00)
            character = 0x10000 + ((character & 0x3FF) << 10 | (unitAt(++i) & 0x3FF));
        if (isSurrogate(character) || !appendUtf8(text, character))
            text.push_back('?');
    }
    return text;
}
