// The command line.
#pragma once

#include <cstdint>

struct Options {
    const char *serverName = nullptr; // first operand; further ones are ignored
    const char *ofile = nullptr;
    const char *startDate = nullptr;
    const char *endDate = nullptr;
    const char *acctPath2 = nullptr;
    const char *oidPath = nullptr;
    std::int32_t dflg = 0; // how often each occurred
    std::int32_t helpflg = 0;
    std::int32_t verflg = 0;
    std::int32_t errflg = 0;
    std::int32_t suppressHeadflg = 0;
    std::int32_t docflg = 0;
};

Options readOptions(int argc, char *const *argv);

// Which date ValidDate checks.
constexpr std::int32_t kStartDate = 0;
constexpr std::int32_t kEndDate = 1;

// 1 for a valid date, which begins with exactly eight digits YYYYMMDD; 0 after the message that says what is
// wrong.
std::int32_t ValidDate(const char *dateStr, std::int32_t dateTypeStr);
