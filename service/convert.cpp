#include "service/convert.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <utility>

#include <iconv.h>

#include "platform/malloced.h"
#include "platform/utf8.h"
#include "service/thread.h"

using namespace qvledger;

namespace {

// Which bytes belong together, whether they make a character or not.
enum class Sequences : std::uint8_t {
    None,
    Pairs,  // a first byte and the one from 0x80 on behind it
    EucJp,  // the same, and two behind 0x8F
    Gb18030 // the same, and four with digits in the second and the last place
};

struct CodeSet {
    std::uint32_t number;
    const char *name;      // iconv's
    std::uint8_t unit = 1; // bytes of its smallest unit
    bool hasAscii = true;  // bytes 0x01 to 0x7F are always the characters of ASCII
    Sequences sequences = Sequences::None;
};

} // namespace

// Code sets with shift states are left out: a fault in such a text has no place to go on from.  ASCII needs
// no row, as it is what remains of an unknown code set.
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
    {17, "SHIFT_JIS", 1, false, Sequences::Pairs},
    {18, "EUC-JP", 1, true, Sequences::EucJp},
    {38, "EUC-KR", 1, true, Sequences::Pairs},
    {CODE_SET_T61, "T.61-8BIT", 1, false},
    {CODE_SET_UTF8, "UTF-8"},
    {109, "ISO-8859-13"},
    {110, "ISO-8859-14"},
    {111, "ISO-8859-15"},
    {112, "ISO-8859-16"},
    {113, "GBK", 1, false, Sequences::Pairs},
    {114, "GB18030", 1, false, Sequences::Gb18030},
    {CODE_SET_UCS2, "UCS-2BE", 2, false},
    {1001, "UTF-32BE", 4, false},
    {1013, "UTF-16BE", 2, false},
    {1014, "UTF-16LE", 2, false},
    {1018, "UTF-32BE", 4, false},
    {1019, "UTF-32LE", 4, false},
    {2004, "HP-ROMAN8"},
    {2009, "IBM850"},
    {2010, "IBM852"},
    {2011, "IBM437"},
    {2024, "CP932", 1, false, Sequences::Pairs},
    {2025, "GB2312", 1, true, Sequences::Pairs},
    {2026, "BIG5", 1, false, Sequences::Pairs},
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

// UTF-16 and UTF-32 in the byte order that a mark at their start tells.
constexpr std::uint32_t kUtf16Marked = 1015;
constexpr std::uint32_t kUtf32Marked = 1017;
constexpr std::uint32_t kUtf16Big = 1013;
constexpr std::uint32_t kUtf16Little = 1014;
constexpr std::uint32_t kUtf32Big = 1018;
constexpr std::uint32_t kUtf32Little = 1019;

static const CodeSet *findCodeSet(std::uint32_t givenNumber) {
    const auto *row =
        std::lower_bound(std::begin(kCodeSets), std::end(kCodeSets), givenNumber,
                         [](const CodeSet &set, std::uint32_t number) { return set.number < number; });
    return row != std::end(kCodeSets) && row->number == givenNumber ? row : nullptr;
}

// ---- Converters ----

static const iconv_t kNoConverter = reinterpret_cast<iconv_t>(std::intptr_t{-1});

// The thread's converters, opened as they are first needed; null until then.
static thread_local iconv_t gConverters[std::size(kCodeSets)];

static void closeConverters(void *) {
    for (iconv_t &converter : gConverters)
        if (converter != nullptr)
            iconv_close(std::exchange(converter, nullptr));
}

// kNoConverter, and why in errno, when it cannot be opened.
static iconv_t findConverter(const CodeSet *set) {
    iconv_t &converter = gConverters[set - std::begin(kCodeSets)];
    if (converter != nullptr) {
        iconv(converter, nullptr, nullptr, nullptr, nullptr); // forget the last text
        return converter;
    }
    const iconv_t opened = iconv_open("UTF-8", set->name);
    if (opened == kNoConverter)
        return kNoConverter;
    static ThreadsEnd end(closeConverters);
    static_cast<void>(end.enter(gConverters)); // or they are left to the process
    return converter = opened;
}

namespace {

// The text that comes about, in memory that grows.
class Output {
public:
    // A unit of one or two bytes makes at most three.
    explicit Output(std::size_t bytes) { grow(3 * bytes + 16); }

    bool grow(std::size_t by) {
        if (!resize(text, size + by))
            return false;
        size += by;
        return true;
    }

    bool ready() const { return text != nullptr; }
    char *at() { return text.get() + used; }
    std::size_t room() const { return size - used; }
    void wrote(std::size_t bytes) { used += bytes; }
    char *finish() {
        text.get()[used] = '\0';
        return text.release();
    }

private:
    Malloced<char> text;
    std::size_t size = 0;
    std::size_t used = 0;
};

constexpr std::size_t kRoomAtEnd = 8; // for a "?", a character that a converter still holds and the NUL

} // namespace

// Runs the converter once over the input, or lets it put out what it holds if that is null.  0, E2BIG after
// the output grew, or another errno number.
static int step(iconv_t converter, char **in, std::size_t *givenLeft, Output &out) {
    char *to = out.at();
    const std::size_t room = out.room() - kRoomAtEnd;
    std::size_t left = room;
    const std::size_t result = iconv(converter, in, givenLeft, &to, &left);
    const int reason = result == static_cast<std::size_t>(-1) ? errno : 0;
    out.wrote(room - left);
    if (reason == E2BIG || out.room() <= 2 * kRoomAtEnd)
        return out.grow(out.room() + 256) ? reason : ENOMEM;
    return reason;
}

// Bytes that belong to the first one, which begins a sequence.
static std::size_t sequenceLength(Sequences sequences, std::span<const std::uint8_t> bytes) {
    const auto byte = [&](std::size_t at) { return at < bytes.size() ? bytes[at] : 0; };
    const auto isDigit = [&](std::size_t at) { return byte(at) >= '0' && byte(at) <= '9'; };
    if (sequences == Sequences::Gb18030 && isDigit(1))
        return byte(2) < 0x80 ? 2 : isDigit(3) ? 4 : 3;
    if (byte(1) < 0x80)
        return 1;
    return sequences == Sequences::EucJp && byte(0) == 0x8F && byte(2) >= 0x80 ? 3 : 2;
}

// Bytes of what is no character at the front of a text: a unit, or as much of a longer sequence as is there.
static std::size_t faultLength(iconv_t converter, const CodeSet &set, std::span<const std::uint8_t> bytes) {
    if (set.unit > 1)
        return std::min<std::size_t>(set.unit, bytes.size());
    const auto isCut = [&](std::size_t givenLength) {
        char nowhere[64];
        char *from = reinterpret_cast<char *>(const_cast<std::uint8_t *>(bytes.data()));
        char *to = nowhere;
        std::size_t room = sizeof nowhere;
        const bool failed = iconv(converter, &from, &givenLength, &to, &room) == static_cast<std::size_t>(-1);
        const bool cut = failed && errno == EINVAL;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        return cut;
    };
    if (!isCut(1))
        return 1;
    if (set.sequences != Sequences::None)
        return sequenceLength(set.sequences, bytes);
    std::size_t length = 1;
    while (length < bytes.size() && isCut(length + 1))
        ++length;
    return length;
}

static char *convertBy(iconv_t converter, const CodeSet &set, std::span<const std::uint8_t> bytes) {
    Output out(bytes.size());
    if (!out.ready())
        return nullptr;
    char *in = reinterpret_cast<char *>(const_cast<std::uint8_t *>(bytes.data())); // iconv only reads it
    std::size_t left = bytes.size();
    while (left > 0) {
        const int reason = step(converter, &in, &left, out);
        if (reason == ENOMEM)
            return nullptr;
        if (reason == 0 || reason == E2BIG)
            continue;
        // What the converter holds belongs before the fault.
        if (step(converter, nullptr, nullptr, out) == ENOMEM)
            return nullptr;
        *out.at() = '?';
        out.wrote(1);
        // EINVAL: the text ends inside a character.
        const std::size_t fault = reason == EINVAL ? left : faultLength(converter, set, bytes.last(left));
        in += fault;
        left -= fault;
    }
    if (step(converter, nullptr, nullptr, out) == ENOMEM)
        return nullptr;
    return out.finish();
}

// ---- Without a converter ----

static bool isAscii(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte < 0x80; });
}

static char *newText(std::span<const std::uint8_t> bytes) {
    auto *text = static_cast<char *>(std::malloc(bytes.size() + 1));
    if (text == nullptr)
        return nullptr;
    std::copy(bytes.begin(), bytes.end(), text);
    text[bytes.size()] = '\0';
    return text;
}

static char *asciiAlone(std::span<const std::uint8_t> bytes) {
    char *text = newText(bytes);
    if (text != nullptr)
        std::replace_if(
            text, text + bytes.size(), [](char byte) { return (byte & 0x80) != 0; }, '?');
    return text;
}

// The bytes before the first unit that is zero.
static std::span<const std::uint8_t> beforeNul(std::span<const std::uint8_t> bytes, std::size_t givenUnit) {
    if (bytes.empty())
        return bytes;
    if (givenUnit == 1) {
        const void *nul = std::memchr(bytes.data(), 0, bytes.size());
        return nul == nullptr ? bytes
                              : bytes.first(static_cast<std::size_t>(static_cast<const std::uint8_t *>(nul) -
                                                                     bytes.data()));
    }
    for (std::size_t at = 0; at + givenUnit <= bytes.size(); at += givenUnit) {
        const auto unit = bytes.subspan(at, givenUnit);
        if (std::all_of(unit.begin(), unit.end(), [](std::uint8_t byte) { return byte == 0; }))
            return bytes.first(at);
    }
    return bytes;
}

// Takes a byte order mark off; the code set that it and the number lead to.  Big-endian without a mark.
static std::uint32_t takeMark(std::span<const std::uint8_t> &bytes, std::uint32_t codeSet) {
    const bool wide = codeSet == kUtf32Marked;
    if (!wide && codeSet != kUtf16Marked)
        return codeSet;
    static constexpr std::uint8_t marks[] = {0, 0, 0xFE, 0xFF, 0, 0};
    const std::size_t unit = wide ? 4 : 2;
    const auto startsWith = [&](const std::uint8_t *mark) {
        return bytes.size() >= unit && std::equal(mark, mark + unit, bytes.begin());
    };
    static constexpr std::uint8_t little[] = {0xFF, 0xFE, 0, 0};
    const bool isBig = startsWith(marks + 4 - unit);
    const bool isLittle = startsWith(little);
    if (isBig || isLittle)
        bytes = bytes.subspan(unit);
    if (wide)
        return isLittle ? kUtf32Little : kUtf32Big;
    return isLittle ? kUtf16Little : kUtf16Big;
}

// ---- UTF-8 ----

// Bytes of what begins like a character at the front of a text and is none.
static std::size_t utf8FaultLength(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    const int ones = std::countl_one(first);
    const auto whole = ones >= 2 && ones <= 6 ? static_cast<std::size_t>(ones) : 1;
    const auto isTail = [](char byte) { return (byte & 0xC0) == 0x80; };
    const std::string_view tail = text.substr(1, whole - 1);
    return 1 + static_cast<std::size_t>(std::find_if_not(tail.begin(), tail.end(), isTail) - tail.begin());
}

// The C library's own converter lets numbers behind the last character pass.
static char *convertFromUtf8(std::span<const std::uint8_t> bytes) {
    auto *text = static_cast<char *>(std::malloc(bytes.size() + 1));
    if (text == nullptr)
        return nullptr;
    char *at = text;
    std::string_view rest(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    while (!rest.empty()) {
        const std::size_t length = utf8Length(rest);
        if (length != 0)
            at = std::copy_n(rest.data(), length, at);
        else
            *at++ = '?';
        rest.remove_prefix(length != 0 ? length : utf8FaultLength(rest));
    }
    *at = '\0';
    return text;
}

// ---- Operations ----

char *qvledger::convertToUtf8(std::span<const std::uint8_t> givenBytes, std::uint32_t codeSet) {
    const CodeSet *set = findCodeSet(takeMark(givenBytes, codeSet));
    const auto bytes = beforeNul(givenBytes, set != nullptr ? set->unit : 1);
    if (set == nullptr)
        return asciiAlone(bytes);
    if (bytes.empty() || (set->hasAscii && isAscii(bytes)))
        return newText(bytes);

    if (codeSet == CODE_SET_UTF8)
        return convertFromUtf8(bytes);
    const iconv_t converter = findConverter(set);
    if (converter == kNoConverter) // EINVAL: the C library was installed without this code set
        return errno == EINVAL ? asciiAlone(bytes) : nullptr;
    return convertBy(converter, *set, bytes);
}

char *qvledger::copyText(std::span<const std::uint8_t> bytes) {
    return newText(beforeNul(bytes, 1));
}
