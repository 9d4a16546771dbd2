#include "tool/placeholders.h"

#include <bit>
#include <optional>

using namespace qvledger;

namespace {

// Which of the first nine arguments are used as what; argument 1 is the lowest bit.
struct Placeholders {
    std::uint32_t texts = 0;
    std::uint32_t numbers = 0;

    std::uint32_t all() const { return texts | numbers; }
};

} // namespace

// Whether a placeholder begins here, however it goes on; passes over "%%".
static bool isPlaceholder(const char *&at) {
    if (at[0] != '%')
        return false;
    if (at[1] != '%')
        return true;
    ++at;
    return false;
}

// Nothing for a text that holds any other conversion.
static std::optional<Placeholders> findPlaceholders(const char *text) {
    Placeholders found;
    for (const char *at = text; *at != '\0'; ++at) {
        if (!isPlaceholder(at))
            continue;
        if (at[1] < '1' || at[1] > '9' || at[2] != '$' || (at[3] != 's' && at[3] != 'd'))
            return std::nullopt;
        (at[3] == 's' ? found.texts : found.numbers) |= 1U << (at[1] - '1');
        at += 3;
    }
    return found;
}

// How many arguments come before the first that is used.
static unsigned unusedBefore(const Placeholders &found) {
    return found.all() != 0 ? static_cast<unsigned>(std::countr_zero(found.all())) : 0;
}

bool qvledger::placeholdersFit(const char *text, const char *defaultText) {
    const std::optional<Placeholders> found = findPlaceholders(text);
    const std::optional<Placeholders> known = findPlaceholders(defaultText);
    if (!found || !known || (found->texts & ~known->texts) != 0 || (found->numbers & ~known->numbers) != 0)
        return false;
    const std::uint32_t used = found->all() >> unusedBefore(*found);
    return (used & (used + 1)) == 0;
}

std::string qvledger::passOverUnused(char *text, const char *defaultText) {
    const unsigned unused = unusedBefore(findPlaceholders(text).value_or(Placeholders{}));
    const std::uint32_t numbers = findPlaceholders(defaultText).value_or(Placeholders{}).numbers;
    std::string kinds;
    for (unsigned i = 0; i < unused; ++i)
        kinds += (numbers >> i & 1) != 0 ? 'd' : 's';
    for (const char *at = text; *at != '\0'; ++at)
        if (isPlaceholder(at)) {
            char &digit = text[at + 1 - text];
            digit = static_cast<char>(digit - static_cast<char>(unused));
        }
    return kinds;
}
