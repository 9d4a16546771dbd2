// Windows has no message catalogues, so messages have their default texts.
#include "service/messages/message.h"

void MSG_UsageBegin(const char *) {}

void MSG_UsageEnd() {}

std::int32_t MSG_GetUnformatted(std::int32_t, std::uint32_t, std::int32_t, std::uint32_t, std::uint32_t *,
                                char *) {
    return 1;
}
