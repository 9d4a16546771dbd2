#include "tool/placeholders.h"

#include <bit>
#include <optional>

namespace {

// Which of the first nine arguments are used as what; argument 1 is the lowest bit.
struct Placeholders {
    std::uint32_t texts = 0;
    std::uint32_t numbers = 0;

    std::uint32_t all() const { return texts | numbers; }
};

} // namespace

// Whether a placeholder begins here, however it goes on; passes over "%%".
static bool isPlaceholder(const char *&inoutp_at) {
    if (inoutp_at[0] != '%')
        return false;
    if (inoutp_at[1] != '%')
        return true;
    ++inoutp_at;
    return false;
}

// Nothing for a text that holds any other conversion.
static std::optional<Placeholders> findPlaceholders(const char *inp_text) {
    Placeholders found;
    for (const char *at = inp_text; *at != '\0'; ++at) {
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
static unsigned unusedBefore(const Placeholders &in_found) {
    return in_found.all() != 0 ? static_cast<unsigned>(std::countr_zero(in_found.all())) : 0;
}

bool placeholdersFit(const char *inp_text, const char *inp_defaultText) {
    const std::optional<Placeholders> found = findPlaceholders(inp_text);
    const std::optional<Placeholders> known = findPlaceholders(inp_defaultText);
    if (!found || !known || (found->texts & ~known->texts) != 0 || (found->numbers & ~known->numbers) != 0)
        return false;
    const std::uint32_t used = found->all() >> unusedBefore(*found);
    return (used & (used + 1)) == 0;
}

std::string passOverUnused(char *inoutp_text, const char *inp_defaultText) {
    const unsigned unused = unusedBefore(findPlaceholders(inoutp_text).value_or(Placeholders{}));
    const std::uint32_t numbers = findPlaceholders(inp_defaultText).value_or(Placeholders{}).numbers;
    std::string kinds;
    for (unsigned i = 0; i < unused; ++i)
        kinds += (numbers >> i & 1) != 0 ? 'd' : 's';
    for (const char *at = inoutp_text; *at != '\0'; ++at)
        if (isPlaceholder(at)) {
            char &digit = inoutp_text[at + 1 - inoutp_text];
            digit = static_cast<char>(digit - static_cast<char>(unused));
        }
    return kinds;
}
