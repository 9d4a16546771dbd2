#include "service/text/convert.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <iconv.h>

#include "platform/utf8.h"
#include "service/thread.h"

using namespace qvledger;

constexpr std::uint32_t kUtf16Be = 1013, kUtf16Le = 1014, kUtf32Be = 1018, kUtf32Le = 1019;
// The byte order is that of the mark at the beginning of the text.
constexpr std::uint32_t kUtf16 = 1015, kUtf32 = 1017;

namespace {

struct CodeSet {
    std::uint32_t number;
    const char *name;     // iconv's name of the code set; unused for a Unicode set with wide units
    std::size_t unit = 1; // bytes of the smallest unit
    bool hasAscii = true; // a text of only bytes 0x01 to 0x7F is ASCII
};

} // namespace

// Code sets with shift states are not supported, because conversion could not resume after a fault.  ASCII
// needs no row, because texts in unknown code sets are read as ASCII.  Unicode sets need no converter.
constexpr CodeSet kCodeSets[] = {
    {CODE_SET_LATIN1, "ISO-8859-1"},
    {5, "ISO-8859-2"},
    {6, "ISO-8859-3"},
    {7, "ISO-8859-4"},
    {8, "ISO-8859-5"},
    {9, "ISO-8859-6"},
    {10, "ISO-8859-7"},
    {11, "ISO-8859-8"},
    {12, "ISO-8859-9"},
    {13, "ISO-8859-10"},
    {17, "SHIFT_JIS", 1, false},
    {18, "EUC-JP"},
    {38, "EUC-KR"},
    {CODE_SET_T61, "T.61-8BIT", 1, false},
    {CODE_SET_UTF8, "UTF-8"},
    {109, "ISO-8859-13"},
    {110, "ISO-8859-14"},
    {111, "ISO-8859-15"},
    {112, "ISO-8859-16"},
    {113, "GBK"},
    {114, "GB18030"},
    {CODE_SET_UCS2, "", 2, false},
    {1001, "", 4, false},
    {kUtf16Be, "", 2, false},
    {kUtf16Le, "", 2, false},
    {kUtf32Be, "", 4, false},
    {kUtf32Le, "", 4, false},
    {2004, "HP-ROMAN8"},
    {2009, "IBM850"},
    {2010, "IBM852"},
    {2011, "IBM437"},
    {2024, "CP932"},
    {2025, "GB2312"},
    {2026, "BIG5"},
    {2027, "MACINTOSH"},
    {2047, "IBM857"},
    {2084, "KOI8-R"},
    {2086, "IBM866"},
    {2088, "KOI8-U"},
    {2089, "IBM858"},
    {2109, "CP874"},
    {2250, "CP1250"},
    {2251, "CP1251"},
    {2252, "CP1252"},
    {2253, "CP1253"},
    {2254, "CP1254"},
    {2255, "CP1255"},
    {2256, "CP1256"},
    {2257, "CP1257"},
    {2258, "CP1258"},
    {2259, "TIS-620"},
};
static_assert(std::is_sorted(std::begin(kCodeSets), std::end(kCodeSets),
                             [](const CodeSet &one, const CodeSet &two) { return one.number < two.number; }));

static const CodeSet *findCodeSet(std::uint32_t number) {
    const auto *row =
        std::lower_bound(std::begin(kCodeSets), std::end(kCodeSets), number,
                         [](const CodeSet &set, std::uint32_t sought) { return set.number < sought; });
    return row != std::end(kCodeSets) && row->number == number ? row : nullptr;
}

// ---- Converters ----

static const iconv_t kNoConverter = reinterpret_cast<iconv_t>(std::intptr_t{-1});

// The thread's converters, opened when first needed; null until then.
static thread_local iconv_t gConverters[std::size(kCodeSets)];

static void closeConverters(void *) {
    for (iconv_t &converter : gConverters)
        if (converter != nullptr)
            iconv_close(std::exchange(converter, nullptr));
}

// Returns the thread's converter for a code set; kNoConverter, with errno, if the converter cannot be opened.
static iconv_t findConverter(const CodeSet *set) {
    iconv_t &converter = gConverters[set - std::begin(kCodeSets)];
    if (converter != nullptr)
        return converter;
    const iconv_t opened = iconv_open("UTF-8", set->name);
    if (opened == kNoConverter)
        return kNoConverter;
    static ThreadsEnd end(closeConverters);
    static_cast<void>(end.enter(gConverters)); // on failure, the converters stay open until the process ends
    return converter = opened;
}

static char *convertBy(iconv_t converter, std::string_view text) {
    // Each byte of input becomes at most three bytes of output.  run() reserves room for one "?" per unread
    // byte.
    const std::size_t size = 4 * text.size() + 16;
    auto *converted = static_cast<char *>(std::malloc(size));
    if (converted == nullptr)
        return nullptr;
    char *in = const_cast<char *>(text.data()); // iconv only reads the text
    char *out = converted;
    std::size_t left = text.size();
    const auto run = [&](char **from) {
        std::size_t room = size - static_cast<std::size_t>(out - converted) - left - 1;
        return iconv(converter, from, &left, &out, &room) != static_cast<std::size_t>(-1);
    };
    while (left > 0 && !run(&in)) {
        run(nullptr); // writes a character that iconv still keeps
        *out++ = '?';
        ++in;
        --left;
    }
    run(nullptr);
    *out = '\0';
    return converted;
}

// ---- Without a converter ----

static bool isAscii(char byte) {
    return (byte & 0x80) == 0;
}

static char *newText(std::string_view text) {
    auto *made = static_cast<char *>(std::malloc(text.size() + 1));
    if (made != nullptr)
        *std::copy(text.begin(), text.end(), made) = '\0';
    return made;
}

static char *asciiAlone(std::string_view text) {
    char *made = newText(text);
    if (made != nullptr)
        std::replace_if(made, made + text.size(), std::not_fn(isAscii), '?');
    return made;
}

// Copies the text, with "?" for each byte that is not part of valid UTF-8.  Does not use iconv, because the C
// library's iconv accepts code points beyond U+10FFFF.
static char *convertFromUtf8(std::string_view text) {
    char *made = newText(text);
    for (std::size_t at = 0; made != nullptr && at < text.size();) {
        const std::size_t length = utf8Length(text.substr(at));
        if (length == 0)
            made[at] = '?';
        at += std::max<std::size_t>(length, 1);
    }
    return made;
}

// Converts a text in a Unicode set.  Does not use iconv, because not every system has these sets.
static char *convertFromUnicode(std::string_view text, const CodeSet &set) try {
    const bool isLittle = set.number == kUtf16Le || set.number == kUtf32Le;
    const bool isCut = text.size() % set.unit != 0;
    std::string converted;
    if (set.number == kUtf16Le || set.number == kUtf16Be) {
        converted = utf8FromUtf16(text, !isLittle);
    } else {
        for (std::size_t at = 0; at + set.unit <= text.size(); at += set.unit) {
            char32_t number = 0;
            for (std::size_t i = 0; i < set.unit; ++i)
                number =
                    number << 8 | static_cast<unsigned char>(text[at + (isLittle ? set.unit - 1 - i : i)]);
            if (isSurrogate(number) || !appendUtf8(converted, number))
                converted.push_back('?');
        }
    }
    return newText(isCut ? converted + '?' : converted);
} catch (const std::bad_alloc &) {
    return nullptr;
}

// The text before its first zero unit.
static std::string_view beforeNul(std::string_view text, std::size_t unit) {
    const std::string_view nul("\0\0\0\0", unit);
    std::size_t at = text.find(nul);
    while (at != text.npos && at % unit != 0)
        at = text.find(nul, at + 1);
    return text.substr(0, at);
}

// Replaces kUtf16 or kUtf32 by a code set with a fixed byte order.  A byte order mark at the
// start of the text selects the order and is removed; without a mark the order is big-endian.  Returns other
// code sets unchanged.
static std::uint32_t takeMark(std::string_view &text, std::uint32_t codeSet) {
    if (codeSet != kUtf16 && codeSet != kUtf32)
        return codeSet;
    const bool isWide = codeSet == kUtf32;
    const std::size_t unit = isWide ? 4 : 2;
    const bool isLittle = text.starts_with(std::string_view("\xFF\xFE\0\0", unit));
    if (isLittle || text.starts_with(std::string_view("\0\0\xFE\xFF", 4).substr(4 - unit)))
        text.remove_prefix(unit);
    if (isWide)
        return isLittle ? kUtf32Le : kUtf32Be;
    return isLittle ? kUtf16Le : kUtf16Be;
}

// ---- Operations ----

static std::string_view viewOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

char *qvledger::convertToUtf8(std::span<const std::uint8_t> bytes, std::uint32_t codeSet) {
    std::string_view text = viewOf(bytes);
    const CodeSet *set = findCodeSet(takeMark(text, codeSet));
    text = beforeNul(text, set != nullptr ? set->unit : 1);
    if (set == nullptr)
        return asciiAlone(text);
    if (set->hasAscii && std::all_of(text.begin(), text.end(), isAscii))
        return newText(text);
    if (codeSet == CODE_SET_UTF8)
        return convertFromUtf8(text);
    if (set->unit != 1)
        return convertFromUnicode(text, *set);
    const iconv_t converter = findConverter(set);
    if (converter == kNoConverter) // EINVAL: the C library lacks this code set
        return errno == EINVAL ? asciiAlone(text) : nullptr;
    return convertBy(converter, text);
}

char *qvledger::copyText(std::span<const std::uint8_t> bytes) {
    return newText(beforeNul(viewOf(bytes), 1));
}
