#include "platform/os.h"

#include <cstdio>
#include <cstring>

// Accepts the documented form: three letters, an optional sign, and a number of hours.
int OS_KnowsZone(const char *zone) {
    int length = 0, hours = 0;
    return (std::sscanf(zone, "%*3[A-Za-z]%n%d", &length, &hours) == 1 && length == 3) ||
           std::strcmp(zone, "UTC") == 0 || std::strcmp(zone, "GMT") == 0;
}
