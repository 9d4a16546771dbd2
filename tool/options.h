// The command line.
#pragma once

#include <cstdint>

namespace qvledger {

struct Options {
    const char *serverName = nullptr;   // first operand
    char *const *moreServers = nullptr; // the others
    std::int32_t numMoreServers = 0;
    const char *ofile = nullptr;
    const char *startDate = nullptr;
    const char *endDate = nullptr;
    const char *acctPath2 = nullptr;
    const char *oidPath = nullptr;
    const char *saveFolder = nullptr;
    std::int32_t dflg = 0; // how often each occurred
    std::int32_t helpflg = 0;
    std::int32_t verflg = 0;
    std::int32_t errflg = 0;
    std::int32_t suppressHeadflg = 0;
    std::int32_t docflg = 0;
    std::int32_t typeflg = 0;
};

// The option letters of a program, as getopt takes them.
constexpr char kReportLetters[] = "do:s:e:p:O:hVag";
constexpr char kJsonLetters[] = "to:s:e:p:O:hV";
constexpr char kCheckLetters[] = "s:e:p:O:S:hV";

Options readOptions(int argc, char *const *argv, const char *letters = kReportLetters);

// Which date ValidDate checks.
constexpr std::int32_t kStartDate = 0;
constexpr std::int32_t kEndDate = 1;

// 1 for a valid date, which begins with exactly eight digits YYYYMMDD; 0 after the message that says what is
// wrong.
std::int32_t ValidDate(const char *dateStr, std::int32_t dateTypeStr);

// Both dates, as far as they are given.
bool datesAreValid(const Options &options);

// The dates that are asked for, as numbers YYYYMMDD, bounds included.
struct DateRange {
    std::int32_t first;
    std::int32_t last;

    bool contains(std::int32_t date) const { return date >= first && date <= last; }
};

// REQUIRES: datesAreValid.
DateRange dateRange(const Options &options);

} // namespace qvledger
