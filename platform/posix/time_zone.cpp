#include "platform/os.h"

#include <cerrno>
#include <ctime>

long _timezone = 0;

void _tzset() {
    tzset();
    _timezone = timezone;
}

int localtime_s(std::tm *fields, const std::time_t *time) {
    return localtime_r(time, fields) != nullptr ? 0 : errno;
}

int OS_KnowsZone(const char *) {
    return 1;
}
