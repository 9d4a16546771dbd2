#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/utf8.h"
#include "platform/windows/include/iconv.h"

using namespace qvledger;

struct Iconv {
    const char *name;
    UINT page;            // the system's code page; 0 for the Unicode sets
    std::size_t unit = 1; // bytes of the smallest unit
    bool bigEndian = false;
    bool pairs = false; // has surrogate pairs, as UTF-16 does
};

constexpr UINT kEucJp = 20932;    // this code page lacks EUC-JP's characters of three bytes
constexpr char kOfThree = '\x8f'; // first byte of a character of three bytes

static Iconv kSets[] = {
    {"ISO-8859-1", 28591},
    {"ISO-8859-2", 28592},
    {"ISO-8859-3", 28593},
    {"ISO-8859-4", 28594},
    {"ISO-8859-5", 28595},
    {"ISO-8859-6", 28596},
    {"ISO-8859-7", 28597},
    {"ISO-8859-8", 28598},
    {"ISO-8859-9", 28599},
    {"ISO-8859-13", 28603},
    {"ISO-8859-15", 28605},
    {"SHIFT_JIS", 932},
    {"EUC-JP", kEucJp},
    {"EUC-KR", 949},
    {"T.61-8BIT", 20261},
    {"GBK", 936},
    {"GB18030", 54936},
    {"IBM850", 850},
    {"IBM852", 852},
    {"IBM437", 437},
    {"CP932", 932},
    {"GB2312", 936},
    {"BIG5", 950},
    {"MACINTOSH", 10000},
    {"IBM857", 857},
    {"KOI8-R", 20866},
    {"IBM866", 866},
    {"KOI8-U", 21866},
    {"IBM858", 858},
    {"CP874", 874},
    {"CP1250", 1250},
    {"CP1251", 1251},
    {"CP1252", 1252},
    {"CP1253", 1253},
    {"CP1254", 1254},
    {"CP1255", 1255},
    {"CP1256", 1256},
    {"CP1257", 1257},
    {"CP1258", 1258},
    {"TIS-620", 874},
    {"UCS-2BE", 0, 2, true},
    {"UTF-16BE", 0, 2, true, true},
    {"UTF-16LE", 0, 2, false, true},
    {"UTF-32BE", 0, 4, true},
    {"UTF-32LE", 0, 4, false},
};

static const auto kFailed = static_cast<std::size_t>(-1);
static const auto kNone = reinterpret_cast<iconv_t>(std::intptr_t{-1});

iconv_t iconv_open(const char *to, const char *from) {
    Iconv *const set = std::find_if(std::begin(kSets), std::end(kSets),
                                    [&](const Iconv &it) { return std::strcmp(it.name, from) == 0; });
    const bool isKnown = set != std::end(kSets) && (set->page == 0 || IsValidCodePage(set->page) != 0);
    if (isKnown && std::strcmp(to, "UTF-8") == 0)
        return set;
    errno = EINVAL;
    return kNone;
}

int iconv_close(iconv_t) {
    return 0; // the sets are static
}

namespace {

// The first character of the input.  reason: 0 if the character is valid, EILSEQ if it is invalid, EINVAL if
// it may be incomplete.
struct Character {
    std::size_t length;
    std::string utf8;
    int reason = 0;
};

} // namespace

static char32_t unitAt(const Iconv &set, std::string_view bytes) {
    char32_t number = 0;
    for (std::size_t i = 0; i < set.unit; ++i)
        number |= char32_t{static_cast<unsigned char>(bytes[set.bigEndian ? set.unit - 1 - i : i])} << 8 * i;
    return number;
}

static Character takeUnits(const Iconv &set, std::string_view bytes) {
    if (bytes.size() < set.unit)
        return {0, "", EINVAL};
    Character found = {set.unit, "", 0};
    char32_t number = unitAt(set, bytes);
    if (set.pairs && number >= 0xD800 && number <= 0xDBFF) {
        if (bytes.size() < 2 * set.unit)
            return {0, "", EINVAL};
        const char32_t second = unitAt(set, bytes.substr(set.unit));
        if ((second & 0xFC00) == 0xDC00) {
            number = 0x10000 + ((number & 0x3FF) << 10 | (second & 0x3FF));
            found.length = 2 * set.unit;
        }
    }
    const bool isHalf = number >= 0xD800 && number <= 0xDFFF;
    if (isHalf || !appendUtf8(found.utf8, number))
        found.reason = EILSEQ;
    return found;
}

static std::string fromPage(UINT page, std::string_view bytes) {
    wchar_t wide[4];
    const int count =
        MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), wide,
                            static_cast<int>(std::size(wide)));
    const std::string_view units(reinterpret_cast<const char *>(wide),
                                 sizeof(wchar_t) * static_cast<std::size_t>(std::max(count, 0)));
    return utf8FromUtf16(units, false);
}

static Character takeFromPage(const Iconv &set, std::string_view bytes) {
    if (set.page == kEucJp && bytes[0] == kOfThree)
        return {0, "", EILSEQ};
    CPINFO page = {};
    GetCPInfo(set.page, &page);
    const std::size_t longest = std::max<std::size_t>(page.MaxCharSize, 1);
    for (std::size_t length = 1; length <= std::min(longest, bytes.size()); ++length) {
        // The first byte of a two-byte character is not a character itself, though some pages convert it.
        if (length == 1 && IsDBCSLeadByteEx(set.page, static_cast<BYTE>(bytes[0])) != 0)
            continue;
        std::string utf8 = fromPage(set.page, bytes.substr(0, length));
        if (!utf8.empty())
            return {length, std::move(utf8), 0};
    }
    return {0, "", bytes.size() < longest ? EINVAL : EILSEQ};
}

std::size_t iconv(iconv_t converter, char **in, std::size_t *left, char **out, std::size_t *room) {
    if (in == nullptr || *in == nullptr)
        return 0;
    while (*left != 0) {
        const std::string_view bytes(*in, *left);
        const Character found =
            converter->page == 0 ? takeUnits(*converter, bytes) : takeFromPage(*converter, bytes);
        const int reason = found.reason != 0 ? found.reason : found.utf8.size() > *room ? E2BIG : 0;
        if (reason != 0) {
            errno = reason;
            return kFailed;
        }
        *out = std::copy(found.utf8.begin(), found.utf8.end(), *out);
        *room -= found.utf8.size();
        *in += found.length;
        *left -= found.length;
    }
    return 0;
}
