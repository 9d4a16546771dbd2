#include "ala/base/plain_days.h"

#include <cstdlib>
#include <ctime>
#include <string_view>

#include "ala/base/lock.h"
#include "platform/os.h"

using namespace qvledger;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::size_t kDays = 16384; // remembered: those of 44 years

// Does the local second come back as it was?  Its instant goes to instant.
static bool comesBack(std::int64_t seconds, std::time_t *instant) {
    const std::time_t local = seconds;
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

void PlainDays::checkZone() {
    const char *zone = std::getenv("TZ");
    const std::string_view now = zone != nullptr ? zone : "";
    if (now == zone_ && _timezone == offset_)
        return;
    isUsable_ = now.size() < sizeof zone_;
    zone_[isUsable_ ? now.copy(zone_, sizeof zone_ - 1) : 0] = '\0';
    offset_ = _timezone;
    days_.reset();
}

bool PlainDays::contains(std::int32_t number) {
    if (days_ == nullptr && isUsable_)
        days_.reset(static_cast<Day *>(std::calloc(kDays, sizeof(Day))));
    if (days_ == nullptr)
        return false;
    Day &day = days_.get()[static_cast<std::uint32_t>(number) % kDays];
    if (!day.isKnown || day.number != number) {
        const Lock lock(timeLock); // guards the conversions
        if (!lock.isLocked())
            return false;
        day = {number, true, findOut(number)};
    }
    return day.isPlain;
}
