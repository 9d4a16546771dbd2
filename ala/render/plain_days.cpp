#include "ala/render/plain_days.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "ala/base/lock.h"
#include "platform/os.h"

using namespace qvledger;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::size_t kDays = 16384; // remembered: those of 44 years

namespace {

struct Day {
    std::int32_t number;
    bool known;
    bool plain;
};

// What is remembered, under timeLock, and the zone for which it holds.
struct Memory {
    char zone[64]; // TZ; a longer one is not remembered
    long offset;   // _timezone
    Day days[kDays];

    // Forgets everything if the zone has changed.  False when the zone cannot be told.
    bool holdsFor(const char *givenZone, long givenOffset) {
        const std::string_view now = givenZone != nullptr ? givenZone : "";
        if (now.size() >= sizeof zone)
            return false;
        if (now != zone || givenOffset != offset) {
            std::memset(days, 0, sizeof days);
            zone[now.copy(zone, sizeof zone - 1)] = '\0';
            offset = givenOffset;
        }
        return true;
    }
};

} // namespace

// Does the local second come back as it was?  Its instant goes to instant.
static bool comesBack(std::int64_t givenLocal, std::time_t *instant) {
    const std::time_t local = givenLocal;
    std::tm asked = {};
    if (gmtime_s(&asked, &local) != 0)
        return false;
    asked.tm_isdst = -1;
    std::tm converted = asked;
    *instant = std::mktime(&converted);
    std::tm back = {};
    return localtime_s(&back, instant) == 0 && back.tm_sec == asked.tm_sec && back.tm_min == asked.tm_min &&
           back.tm_hour == asked.tm_hour && back.tm_mday == asked.tm_mday && back.tm_mon == asked.tm_mon &&
           back.tm_year == asked.tm_year;
}

static bool findOut(std::int32_t day) {
    const std::int64_t start = day * kSecondsPerDay;
    std::time_t first = 0;
    std::time_t last = 0;
    // -1 stands for a failed conversion, so a day that holds that second is left to the conversion itself.
    return comesBack(start, &first) && comesBack(start + kSecondsPerDay - 1, &last) &&
           last - first == kSecondsPerDay - 1 && (last < -1 || first > -1);
}

bool ALA__IsPlainDay(std::int32_t in_day) {
    static Memory memory = {};
    const Lock lock(timeLock);
    if (!lock.isLocked() || !memory.holdsFor(std::getenv("TZ"), _timezone))
        return false;
    Day &day = memory.days[static_cast<std::uint32_t>(in_day) % kDays];
    if (!day.known || day.number != in_day)
        day = {in_day, true, findOut(in_day)};
    return day.plain;
}
