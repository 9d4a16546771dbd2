#include "ala/base/plain_days.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "ala/base/lock.h"
#include "platform/os.h"
#include "service/calendar.h"

using namespace qvledger;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::size_t kDays = 16384; // days in the cache: almost 45 years

// Converts a local time, in seconds since 1970, to an instant.  True if converting the instant back results
// in the same local time.
static bool survivesRoundTrip(std::int64_t local, std::time_t *instant) {
    std::tm original = calendarOf(local);
    original.tm_isdst = -1;
    std::tm converted = original;
    *instant = std::mktime(&converted);
    std::tm back = {};
    return localtime_s(&back, instant) == 0 && back.tm_sec == original.tm_sec &&
           back.tm_min == original.tm_min && back.tm_hour == original.tm_hour &&
           back.tm_mday == original.tm_mday && back.tm_mon == original.tm_mon &&
           back.tm_year == original.tm_year;
}

static bool isPlainDay(std::int32_t day) {
    const std::int64_t start = day * kSecondsPerDay;
    std::time_t first = 0;
    std::time_t last = 0;
    // mktime() returns -1 when it fails, so a day that contains the instant -1 is never plain.
    return survivesRoundTrip(start, &first) && survivesRoundTrip(start + kSecondsPerDay - 1, &last) &&
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

bool PlainDays::contains(std::int64_t local) {
    const auto number =
        static_cast<std::int32_t>(std::chrono::floor<std::chrono::days>(std::chrono::seconds(local)).count());
    if (days_ == nullptr && isUsable_)
        days_.reset(static_cast<Day *>(std::calloc(kDays, sizeof(Day))));
    if (days_ == nullptr)
        return false;
    Day &day = days_.get()[static_cast<std::uint32_t>(number) % kDays];
    if (!day.isKnown || day.number != number) {
        const Lock lock(timeLock);
        if (!lock.isLocked())
            return false;
        day = {number, true, isPlainDay(number)};
    }
    return day.isPlain;
}
