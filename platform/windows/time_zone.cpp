#include "platform/os.h"

#include <cctype>
#include <string_view>

// Accepts the documented form: three letters, an optional sign, and a number of hours.
int OS_KnowsZone(const char *zone) {
    const std::string_view text(zone);
    if (text == "UTC" || text == "GMT")
        return 1;
    const auto isAt = [&](std::size_t at, int (*kind)(int)) {
        return at < text.size() && kind(static_cast<unsigned char>(text[at])) != 0;
    };
    const std::size_t hours = text.substr(0, 4).find_first_of("+-") == 3 ? 4 : 3;
    return isAt(0, std::isalpha) && isAt(1, std::isalpha) && isAt(2, std::isalpha) &&
           isAt(hours, std::isdigit);
}
