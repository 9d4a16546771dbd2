#include "tool/missing.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace qvledger;
using std::chrono::sys_days, std::chrono::year_month_day;

static year_month_day calendarDate(std::int32_t date) {
    return {std::chrono::year(date / 10000), std::chrono::month(static_cast<unsigned>(date / 100 % 100)),
            std::chrono::day(static_cast<unsigned>(date % 100))};
}

static std::int32_t numberOf(sys_days when) {
    const year_month_day date(when);
    return static_cast<std::int32_t>(static_cast<int>(date.year()) * 10000 +
                                     static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
                                     static_cast<int>(static_cast<unsigned>(date.day())));
}

void DayGaps::date(const std::string &server, std::int32_t date, std::vector<Missing> &missing) {
    if (server != server_)
        last_ = 0;
    server_ = server;
    if (!calendarDate(date).ok())
        return;
    const sys_days here = calendarDate(date);
    if (last_ != 0) {
        const sys_days expected = sys_days(calendarDate(last_)) + std::chrono::days(1);
        const std::int32_t from = std::max(numberOf(expected), range_.first);
        const std::int32_t to = std::min(numberOf(here - std::chrono::days(1)), range_.last);
        if (from <= to)
            missing.push_back(
                {server, "", from, to, from == to ? "no log of this day" : "no logs of these days"});
    }
    last_ = date;
}

std::string qvledger::dateText(std::int32_t date) {
    if (!calendarDate(date).ok())
        return "";
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
    return text;
}
