#include "platform/os.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <string>
#include <string_view>

#include "platform/posix/ascii_case.h"
#include "platform/posix/guard.h"
#include "platform/utf8.h"

using namespace qvledger;

static int lower(char byte) {
    return static_cast<unsigned char>(asciiLower(byte));
}

// Converts a character of any alphabet to lower case; only ASCII letters if the system lacks the locale.
// Never converts another character, such as the Kelvin sign, to an ASCII letter, because an ASCII name must
// not match a look-alike.
static char32_t lowerCharacter(char32_t character) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (character < 0x80)
        return static_cast<char32_t>(lower(static_cast<char>(character)));
    if (unicode == nullptr)
        return character;
    const auto folded = static_cast<char32_t>(towlower_l(static_cast<wint_t>(character), unicode));
    return folded < 0x80 ? character : folded;
}

static std::string narrowOf(std::wstring_view wide, const char *fallback, bool *usedDefault) {
    std::string text;
    for (const wchar_t character : wide) {
        if (!appendUtf8(text, static_cast<char32_t>(character))) {
            text += fallback;
            *usedDefault = true;
        }
    }
    return text;
}

extern "C" {

UINT GetACP() {
    return CP_UTF8;
}

char *_strdup(const char *inp_text) {
    return strdup(inp_text);
}

int _stricmp(const char *inp_one, const char *inp_two) {
    while (*inp_one != '\0' && lower(*inp_one) == lower(*inp_two)) {
        ++inp_one;
        ++inp_two;
    }
    return lower(*inp_one) - lower(*inp_two);
}

int _memicmp(const void *inp_one, const void *inp_two, std::size_t in_length) {
    const auto *one = static_cast<const char *>(inp_one);
    const auto *two = static_cast<const char *>(inp_two);
    for (std::size_t i = 0; i < in_length; ++i)
        if (lower(one[i]) != lower(two[i]))
            return lower(one[i]) - lower(two[i]);
    return 0;
}

const unsigned char *_mbschr(const unsigned char *inp_text, unsigned in_character) {
    const char *begin = reinterpret_cast<const char *>(inp_text);
    std::string_view rest(begin);
    while (!rest.empty()) {
        const char *here = rest.data();
        if (takeUtf8(rest) == in_character)
            return reinterpret_cast<const unsigned char *>(here);
    }
    return in_character == 0 ? inp_text + std::strlen(begin) : nullptr;
}

int _mbsicmp(const unsigned char *inp_one, const unsigned char *inp_two) {
    std::string_view one(reinterpret_cast<const char *>(inp_one));
    std::string_view two(reinterpret_cast<const char *>(inp_two));
    while (!one.empty() && !two.empty()) {
        const char32_t left = lowerCharacter(takeUtf8(one));
        const char32_t right = lowerCharacter(takeUtf8(two));
        if (left != right)
            return left < right ? -1 : 1;
    }
    return static_cast<int>(!one.empty()) - static_cast<int>(!two.empty());
}

int WideCharToMultiByte(UINT in_codePage, DWORD in_flags, const wchar_t *inp_wide, int in_wideLength,
                        char *outp_text, int in_size, const char *in_default, BOOL *outp_usedDefault) {
    return guarded([&] {
        if (in_codePage != CP_OEMCP || in_flags != 0 || inp_wide == nullptr || in_wideLength < -1 ||
            in_wideLength == 0 || in_size < 0 || (in_size > 0 && outp_text == nullptr))
            return failWith(ERROR_INVALID_PARAMETER);
        const std::size_t length =
            in_wideLength == -1 ? std::wcslen(inp_wide) + 1 : static_cast<std::size_t>(in_wideLength);
        bool usedDefault = false;
        const std::string text =
            narrowOf({inp_wide, length}, in_default != nullptr ? in_default : "?", &usedDefault);
        if (outp_usedDefault != nullptr)
            *outp_usedDefault = usedDefault ? 1 : 0;
        if (text.size() > static_cast<std::size_t>(in_size == 0 ? INT32_MAX : in_size))
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        if (in_size > 0)
            std::memcpy(outp_text, text.data(), text.size());
        return static_cast<int>(text.size());
    });
}

} // extern "C"
