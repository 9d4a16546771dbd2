#include "tool/placeholders.h"

#include <cstdint>
#include <optional>

namespace {

// Which of the first nine arguments are used as what.
struct Placeholders {
    std::uint32_t texts = 0;
    std::uint32_t numbers = 0;

    bool operator==(const Placeholders &) const = default;
};

} // namespace

// Nothing for a text that holds any other conversion.
static std::optional<Placeholders> findPlaceholders(const char *inp_text) {
    Placeholders found;
    for (const char *at = inp_text; *at != '\0'; ++at) {
        if (*at != '%')
            continue;
        if (at[1] == '%') {
            ++at;
            continue;
        }
        if (at[1] < '1' || at[1] > '9' || at[2] != '$' || (at[3] != 's' && at[3] != 'd'))
            return std::nullopt;
        (at[3] == 's' ? found.texts : found.numbers) |= 1U << (at[1] - '0');
        at += 3;
    }
    return found;
}

bool samePlaceholders(const char *inp_text, const char *inp_defaultText) {
    const std::optional<Placeholders> found = findPlaceholders(inp_text);
    return found.has_value() && found == findPlaceholders(inp_defaultText);
}
