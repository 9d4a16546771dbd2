#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "service/text/convert.h"

using namespace qvledger;

using namespace std::string_literals;

// Returns a copy of a text of the library and frees the text.
static std::string take(char *source) {
    const std::string text = source != nullptr ? source : "(no text)";
    std::free(source);
    return text;
}

static std::string convert(const std::string &input, std::uint32_t codeSet) {
    // A block of the input's size, so that the sanitizer detects reads past the end.
    const auto bytes = std::make_unique<std::uint8_t[]>(input.size());
    std::memcpy(bytes.get(), input.data(), input.size());
    return take(convertToUtf8({bytes.get(), input.size()}, codeSet));
}

TEST(Convert, EachCodeSetIsConvertedToUtf8) {
    const struct {
        const char *label;
        std::uint32_t codeSet;
        std::string bytes, text;
    } cases[] = {
        {"ASCII with other bytes", 3, "a\xE4\xF6z", "a??z"},
        {"Latin-1 up to its NUL", 4, "M\xFCller\x80\0b"s, "M\u00FCller\u0080"},
        {"T.61 with a diacritic", 76, "M\xC8uller", "M\u00FCller"},
        {"T.61 lacks some of ASCII", 76, "a\\b{", "a?b?"},
        {"UTF-8", 106, "\xE2\x82\xAC \xF0\x9F\x98\x80", "\u20AC \U0001F600"},
        {"UTF-8, wrong bytes", 106, "a\xE4\xFFz\xBF\xBF", "a??z??"},
        {"UTF-8, cut", 106, "\xE2\x82z\xF0\x9F\x98\xE2\x82", "??z?????"},
        {"UTF-8, invalid characters", 106, "\xC0\xAF\xED\xA0\x80z\xF4\x90\x80\x80", "?????z????"},
        {"Shift JIS, cut", 17, "\x83\x65z\x83", "\u30C6z?"},
        {"EUC-JP, cut in three places", 18, "\x8F\xA1z\xA4z\x8F\xA1", "??z?z??"},
        {"GB18030, four invalid bytes", 114, "\xFE\x39\xFE\x39z", "?9?9z"},
        {"UCS-4, above U+10FFFF", 1001, "\0\x10\xFF\xFF\0\x11\0\0"s, "\U0010FFFF?"},
        {"UCS-2, a low zero byte is not a terminator", 1000, "\x01\0\0A\0\0\0B"s, "\u0100A"},
        {"UCS-2, a surrogate pair", 1000, "\0a\xD8\x3D\xDE\0\0z"s, "a??z"},
        {"UCS-2, cut", 1000, "\0a\x20"s, "a?"},
        {"UTF-16BE, a surrogate pair", 1013, "\xD8\x3D\xDE\0"s, "\U0001F600"},
        {"UTF-16BE, half a pair", 1013, "\xDE\0\0a\xD8\x3D"s, "?a?"},
        {"UTF-16 with a mark", 1015, "\xFF\xFEz\0"s, "z"},
        {"UTF-32 with a mark", 1017, "\0\0\xFE\xFF\0\1\xF6\0"s, "\U0001F600"},
        {"windows-1252, an unassigned byte", 2252, "\x80\x93\x81z", "\u20AC\u201C?z"},
        {"windows-1258, a delayed letter is flushed at the end", 2258, "ab\xE2", "ab\u00E2"},
        {"windows-1258, and flushed before an invalid byte", 2258, "\xE2\xD2z\xE2\x8A", "\u1EA9z\u00E2?"},
        {"nothing", 1000, "", ""},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(convert(row.bytes, row.codeSet), row.text) << row.label;
        EXPECT_EQ(convert(row.bytes, row.codeSet), row.text) << row.label << ", again";
    }
}
