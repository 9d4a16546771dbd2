// Texts, the environment and the time zone.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwctype>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "platform/os.h"
#include "platform/posix/utf8.h"

// Case is folded without regard to the process's locale: names must not match in one language alone.
static int lower(char givenByte) {
    const auto byte = static_cast<unsigned char>(givenByte);
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

// A character's lower case in any alphabet.  The locale is made once and stays; without it only ASCII folds.
// No other character folds into ASCII, as the sign of the kelvin would: a name in ASCII has no look-alike.
static char32_t lowerCharacter(char32_t character) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (character < 0x80)
        return static_cast<char32_t>(lower(static_cast<char>(character)));
    if (unicode == nullptr)
        return character;
    const auto folded = static_cast<char32_t>(towlower_l(static_cast<wint_t>(character), unicode));
    return folded < 0x80 ? character : folded;
}

// The environment is read without a lock, by the C library too, and what was found may be kept.  So its array
// is not changed but exchanged, and no array and no text is ever released; each is there once.
static int assign(const char *assignment) {
    const char *equals = std::strchr(assignment, '=');
    if (equals == nullptr || equals == assignment) {
        errno = EINVAL;
        return -1;
    }
    const std::string name(assignment, equals);
    const bool remains = equals[1] != '\0';
    static std::mutex lock;
    const std::lock_guard guard(lock);
    const char *now = std::getenv(name.c_str());
    if (remains ? now != nullptr && std::strcmp(now, equals + 1) == 0 : now == nullptr)
        return 0;
    static auto &texts = *new std::set<std::string>;
    static auto &arrays = *new std::set<std::vector<const char *>>;
    std::vector<const char *> next;
    for (char **at = environ; at != nullptr && *at != nullptr; ++at)
        if (std::strncmp(*at, assignment, name.size() + 1) != 0)
            next.push_back(*at);
    if (remains)
        next.push_back(texts.insert(assignment).first->c_str());
    next.push_back(nullptr);
    char **array = const_cast<char **>(arrays.insert(std::move(next)).first->data());
    std::atomic_ref(environ).store(array, std::memory_order_release);
    return 0;
}

extern "C" {

long _timezone = 0;

void _tzset() {
    tzset();
    _timezone = timezone;
}

int _putenv(const char *inp_assignment) {
    try {
        return assign(inp_assignment);
    } catch (const std::bad_alloc &) {
        errno = ENOMEM;
        return -1;
    }
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

} // extern "C"
