// What is summed, and the groups that it is summed by.
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
    int places; // after the decimal point
};
enum : std::size_t { kJobs, kDocuments, kSheets, kCopies, kCost, kNumMeasures };
constexpr std::array<Measure, kNumMeasures> kMeasures = {
    {{"jobs", 0}, {"documents", 0}, {"sheets", 0}, {"copies", 0}, {"cost", 6}}};

// A time with its offset from UTC, as the facility writes it in the form ALA_TIME_ISO_8601.
struct Moment {
    std::int64_t seconds = 0; // since 1970
    std::string text;         // empty: there is none

    // False, with the moment unchanged, if the text is not such a time.
    bool set(std::string_view time);
};

struct Sums {
    std::array<Amount, kNumMeasures> amounts{};
    Moment first, last; // completion

    void add(const Sums &other);
    // Adds what one job has.
    void addJob(const std::array<Amount, kNumMeasures> &job, const Moment &completion);

private:
    void include(const Moment &from, const Moment &to);
};

// The texts of a group's key, each with a NUL after it.
using Key = std::string;
std::vector<std::string> keyTexts(std::string_view key);

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>{}(key); }
};
using Groups = std::unordered_map<Key, Sums, KeyHash, std::equal_to<>>;

} // namespace qvledger
