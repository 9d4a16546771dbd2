// The command line.
#pragma once

#include <cstdint>
#include <vector>

namespace qvledger {

struct Options {
    const char *serverName = nullptr;   // first operand
    char *const *moreServers = nullptr; // operands after the first
    std::int32_t numMoreServers = 0;
    const char *ofile = nullptr;
    const char *startDate = nullptr;
    const char *endDate = nullptr;
    const char *acctPath2 = nullptr;
    const char *oidPath = nullptr;
    const char *saveFolder = nullptr;
    const char *groupBy = nullptr;
    const char *sortBy = nullptr;
    const char *top = nullptr;
    const char *form = nullptr;
    const char *stateFile = nullptr;
    std::int32_t dflg = 0; // number of -d options; non-zero: delete the logs
    std::int32_t helpflg = 0;
    std::int32_t verflg = 0;
    std::int32_t errflg = 0;          // number of invalid options
    std::int32_t suppressHeadflg = 0; // 1: no header lines (-g)
    std::int32_t docflg = 0;          // 1: report documents, too (-a)
    std::int32_t typeflg = 0;         // 1: write typed values (-t)
    std::int32_t quietflg = 0;        // 1: report no days without a log (-q)
};

// The option letters of each program, in the form of getopt.
constexpr char kReportLetters[] = "do:s:e:p:O:hVag";
constexpr char kJsonLetters[] = "tc:o:s:e:p:O:hV";
constexpr char kCheckLetters[] = "qs:e:p:O:S:hV";
constexpr char kSumLetters[] = "b:k:n:f:s:e:p:O:hV";

// Replaces "--help" by "-h" and "--version" by "-V".  Stops at the first argument that does not begin with a
// hyphen.
void replaceLongOptions(int argc, char **argv);

Options readOptions(int argc, char *const *argv, const char *letters = kReportLetters);

// All operands: the names of the servers, for a program that accepts several.
std::vector<const char *> serversOf(const Options &options);

// True if there are names, no name is empty and no name occurs twice: the logs of a repeated server would be
// written or counted twice.
bool areDistinctNames(const std::vector<const char *> &servers);

// Values of ValidDate's dateTypeStr: whether messages call the date the start date or the end date.
constexpr std::int32_t kStartDate = 0;
constexpr std::int32_t kEndDate = 1;

// Checks a date.  Returns 1 for a valid date; otherwise prints a message with the fault and returns 0.  A
// valid date begins with exactly eight digits, YYYYMMDD, and the month has this day.
std::int32_t ValidDate(const char *dateStr, std::int32_t dateTypeStr);

// Checks the dates in the options with ValidDate.  True for options without dates.
bool datesAreValid(const Options &options);

// The requested range of dates, as numbers YYYYMMDD, both ends included.
struct DateRange {
    std::int32_t first;
    std::int32_t last;

    bool contains(std::int32_t date) const { return date >= first && date <= last; }
};

// REQUIRES: datesAreValid(options).
DateRange dateRange(const Options &options);

} // namespace qvledger
