// The measures that are summed, and their sums by group.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tool/sum/amount.h"

namespace qvledger {

struct Measure {
    const char *name;
    int places; // digits after the decimal point
};
enum : std::size_t { kJobs, kDocuments, kSheets, kCopies, kCost, kNumMeasures };
constexpr std::array<Measure, kNumMeasures> kMeasures = {
    {{"jobs", 0}, {"documents", 0}, {"sheets", 0}, {"copies", 0}, {"cost", 6}}};

// A time with its offset from UTC, as rendered in the form ALA_TIME_ISO_8601.
struct Moment {
    std::int64_t seconds = 0; // since 1970-01-01 00:00 UTC
    std::string text;         // empty: no time

    // Parses a time.  If the text is not a time in this form, with a date from the year -32767 to 32767,
    // returns false and changes nothing.
    bool set(std::string_view time);
};

struct Sums {
    std::array<Amount, kNumMeasures> amounts{};
    Moment first, last; // first and last completion time

    void add(const Sums &other);
    // Adds the amounts and the completion time of a job.
    void addJob(const std::array<Amount, kNumMeasures> &job, const Moment &completion);

private:
    void include(const Moment &from, const Moment &to);
};

// The texts of a group's key, with a NUL after each text.
using Key = std::string;
// Splits a key into its texts.
std::vector<std::string> keyTexts(std::string_view key);

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>{}(key); }
};
using Groups = std::unordered_map<Key, Sums, KeyHash, std::equal_to<>>;

} // namespace qvledger
