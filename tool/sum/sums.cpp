#include "tool/sum/sums.h"

#include <chrono>

using namespace qvledger;

// Parses up to nine digits at the beginning of the text, and removes them.  False for fewer than `fewest`
// digits.
static bool takeNumber(std::string_view &text, std::size_t fewest, std::int64_t *number) {
    std::size_t digits = 0;
    *number = 0;
    for (; digits < text.size() && digits < 9 && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        *number = *number * 10 + (text[digits] - '0');
    text.remove_prefix(digits);
    return digits >= fewest;
}

static bool takeSign(std::string_view &text, char sign) {
    if (!text.starts_with(sign))
        return false;
    text.remove_prefix(1);
    return true;
}

bool Moment::set(std::string_view time) {
    std::string_view left = time;
    const bool isBefore0 = takeSign(left, '-');
    if (!isBefore0)
        takeSign(left, '+');
    std::int64_t year, month, day, hour, minute, second, hours, minutes;
    if (!takeNumber(left, 4, &year) || !takeSign(left, '-') || !takeNumber(left, 2, &month) ||
        !takeSign(left, '-') || !takeNumber(left, 2, &day) || !takeSign(left, 'T') ||
        !takeNumber(left, 2, &hour) || !takeSign(left, ':') || !takeNumber(left, 2, &minute) ||
        !takeSign(left, ':') || !takeNumber(left, 2, &second))
        return false;
    const bool isWest = left.starts_with('-');
    if (!(takeSign(left, '-') || takeSign(left, '+')) || !takeNumber(left, 2, &hours) ||
        !takeSign(left, ':') || !takeNumber(left, 2, &minutes) || !left.empty() ||
        year > static_cast<int>(std::chrono::year::max()))
        return false;
    namespace chrono = std::chrono;
    const chrono::year_month_day date(chrono::year(static_cast<int>(isBefore0 ? -year : year)),
                                      chrono::month(static_cast<unsigned>(month)),
                                      chrono::day(static_cast<unsigned>(day)));
    if (!date.ok())
        return false;
    const std::int64_t offset = (hours * 60 + minutes) * (isWest ? -60 : 60);
    const std::int64_t days = chrono::sys_days(date).time_since_epoch().count();
    seconds = days * 86400 + hour * 3600 + minute * 60 + second - offset;
    text = time;
    return true;
}

void Sums::include(const Moment &from, const Moment &to) {
    if (from.text.empty())
        return;
    if (first.text.empty() || from.seconds < first.seconds)
        first = from;
    if (last.text.empty() || to.seconds > last.seconds)
        last = to;
}

void Sums::add(const Sums &other) {
    for (std::size_t i = 0; i < kNumMeasures; ++i)
        amounts[i] += other.amounts[i];
    include(other.first, other.last);
}

void Sums::addJob(const std::array<Amount, kNumMeasures> &job, const Moment &completion) {
    for (std::size_t i = 0; i < kNumMeasures; ++i)
        amounts[i] += job[i];
    include(completion, completion);
}

std::vector<std::string> qvledger::keyTexts(std::string_view key) {
    std::vector<std::string> texts;
    while (!key.empty()) {
        texts.emplace_back(key.substr(0, key.find('\0')));
        key.remove_prefix(texts.back().size() + 1);
    }
    return texts;
}
