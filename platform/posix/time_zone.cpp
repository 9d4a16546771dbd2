#include "platform/os.h"

#include <ctime>

long _timezone = 0;

void _tzset() {
    tzset();
    _timezone = timezone;
}
