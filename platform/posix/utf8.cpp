#include "platform/posix/utf8.h"

#include <cstddef>

constexpr char32_t kLastCharacter = 0x10FFFF;

static bool isSurrogate(char32_t number) {
    return number >= 0xD800 && number <= 0xDFFF;
}
static bool isStrayByte(char32_t number) {
    return number >= kStrayByte + 0x80 && number <= kStrayByte + 0xFF;
}

static unsigned char byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

namespace {

struct Form {
    std::size_t length; // bytes of a character
    unsigned char mask; // the bits of its first byte that tell the length
    unsigned char lead; // their value
    char32_t smallest;  // the first character that needs this length
};

} // namespace

constexpr Form kForms[] = {
    {1, 0x80, 0x00, 0}, {2, 0xE0, 0xC0, 0x80}, {3, 0xF0, 0xE0, 0x800}, {4, 0xF8, 0xF0, 0x10000}};

// The character that begins a text in a form, or a number beyond all characters if none does.
static char32_t decode(std::string_view text, const Form &form) {
    const unsigned char first = byteAt(text, 0);
    if ((first & form.mask) != form.lead || text.size() < form.length)
        return kLastCharacter + 1;
    char32_t character = first & static_cast<unsigned char>(~form.mask);
    for (std::size_t i = 1; i < form.length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80)
            return kLastCharacter + 1;
        character = character << 6 | (byteAt(text, i) & 0x3F);
    }
    const bool valid = character >= form.smallest && !isSurrogate(character);
    return valid ? character : kLastCharacter + 1;
}

char32_t takeUtf8(std::string_view &text) {
    for (const Form &form : kForms) {
        const char32_t character = decode(text, form);
        if (character <= kLastCharacter) {
            text.remove_prefix(form.length);
            return character;
        }
    }
    const unsigned char stray = byteAt(text, 0);
    text.remove_prefix(1);
    return kStrayByte + stray;
}

bool appendUtf8(std::string &text, char32_t character) {
    if (isStrayByte(character)) {
        text.push_back(static_cast<char>(character - kStrayByte));
        return true;
    }
    if (isSurrogate(character) || character > kLastCharacter)
        return false;
    const Form *form = kForms;
    while (form != kForms + 3 && character >= form[1].smallest)
        ++form;
    auto shift = static_cast<unsigned>(6 * (form->length - 1));
    text.push_back(static_cast<char>(form->lead | character >> shift));
    while (shift != 0) {
        shift -= 6;
        text.push_back(static_cast<char>(0x80 | (character >> shift & 0x3F)));
    }
    return true;
}

std::string utf8FromUtf16(std::string_view bytes, bool bigEndian) {
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
