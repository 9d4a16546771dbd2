#include "platform/os.h"

#include <cerrno>
#include <ctime>

long _timezone = 0;

void _tzset() {
    tzset();
    _timezone = timezone;
}

static int resultOf(const std::tm *converted) {
    return converted != nullptr ? 0 : errno;
}

int gmtime_s(std::tm *outp_time, const std::time_t *inp_time) {
    return resultOf(gmtime_r(inp_time, outp_time));
}

int localtime_s(std::tm *outp_time, const std::time_t *inp_time) {
    return resultOf(localtime_r(inp_time, outp_time));
}

std::time_t _mkgmtime(std::tm *inoutp_time) {
    return timegm(inoutp_time);
}
