#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "platform/utf8.h"
#include "platform/windows/include/iconv.h"

using namespace qvledger;

constexpr UINT kEucJp = 20932;    // this code page lacks EUC-JP's characters of three bytes
constexpr char kOfThree = '\x8f'; // first byte of a character of three bytes

// Returns the code page of a code set; 0 if the code set is unknown.
static UINT pageOf(std::string_view name) {
    constexpr std::pair<std::string_view, UINT> kNamed[] = {
        {"SHIFT_JIS", 932}, {"EUC-JP", kEucJp}, {"EUC-KR", 949},  {"T.61-8BIT", 20261},
        {"GBK", 936},       {"GB18030", 54936}, {"GB2312", 936},  {"BIG5", 950},
        {"KOI8-R", 20866},  {"KOI8-U", 21866},  {"TIS-620", 874}, {"MACINTOSH", 10000}};
    for (const auto &[known, page] : kNamed)
        if (name == known)
            return page;
    // Other names contain the number of the code page, or that of the part of ISO 8859.
    const auto numberAfter = [&](std::string_view prefix) {
        return name.starts_with(prefix) ? static_cast<UINT>(std::atoi(name.data() + prefix.size())) : 0;
    };
    const UINT part = numberAfter("ISO-8859-");
    return part != 0 ? 28590 + part : std::max(numberAfter("CP"), numberAfter("IBM"));
}

// A converter is the number of its code page.
iconv_t iconv_open(const char *, const char *from) {
    const UINT page = pageOf(from);
    if (page != 0 && IsValidCodePage(page) != 0)
        return reinterpret_cast<iconv_t>(std::uintptr_t{page});
    errno = EINVAL;
    return reinterpret_cast<iconv_t>(std::intptr_t{-1});
}

int iconv_close(iconv_t) {
    return 0;
}

static std::string fromPage(UINT page, std::string_view bytes) {
    constexpr int kRoom = 4;
    wchar_t wide[kRoom];
    const int count = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(),
                                          static_cast<int>(bytes.size()), wide, kRoom);
    return utf8FromUtf16({reinterpret_cast<const char *>(wide),
                          sizeof(wchar_t) * static_cast<std::size_t>(std::max(count, 0))},
                         false);
}

// Converts the first character of the bytes, and sets its length.  Returns an empty text if the character is
// invalid or cut.
static std::string takeCharacter(UINT page, std::string_view bytes, std::size_t *length) {
    CPINFO info = {};
    GetCPInfo(page, &info);
    const std::size_t longest = std::max<std::size_t>(info.MaxCharSize, 1);
    if (page == kEucJp && bytes[0] == kOfThree)
        return "";
    for (*length = 1; *length <= std::min(longest, bytes.size()); ++*length) {
        // The first byte of a two-byte character is not a character itself, though some pages convert it.
        if (*length == 1 && IsDBCSLeadByteEx(page, static_cast<BYTE>(bytes[0])) != 0)
            continue;
        if (std::string utf8 = fromPage(page, bytes.substr(0, *length)); !utf8.empty())
            return utf8;
    }
    return "";
}

std::size_t iconv(iconv_t converter, char **in, std::size_t *left, char **out, std::size_t *room) {
    if (in == nullptr || *in == nullptr)
        return 0;
    const auto page = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(converter));
    while (*left != 0) {
        std::size_t length = 0;
        const std::string utf8 = takeCharacter(page, {*in, *left}, &length);
        if (utf8.empty() || utf8.size() > *room)
            return static_cast<std::size_t>(-1);
        *out = std::copy(utf8.begin(), utf8.end(), *out);
        *room -= utf8.size();
        *in += length;
        *left -= length;
    }
    return 0;
}
