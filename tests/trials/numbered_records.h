// Logs of numbered records, and the numbers found in logs and reports.
#pragma once

#include <set>
#include <sstream>
#include <string>

#include "tests/support/run_tool.h"

using Numbers = std::set<int>;
constexpr int kEnd = 11; // one past the highest record number

inline samples::Bytes numberedLog(int first, int end) {
    samples::Log log;
    for (int number = first; number < end; ++number)
        log.job(jobOf({{"job-name", {"record-" + std::to_string(number) + '.'}}}));
    return log.bytes();
}

inline Numbers numbersIn(const std::string &bytes) {
    Numbers found;
    for (int number = 1; number < kEnd; ++number)
        if (bytes.find("record-" + std::to_string(number) + '.') != bytes.npos)
            found.insert(number);
    return found;
}

// Returns the numbers of the records that are whole lines of a report.
inline std::multiset<int> linesIn(const std::string &report) {
    std::multiset<int> found;
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);)
        for (const int number : numbersIn(line))
            if (line == "record-" + std::to_string(number) + '.')
                found.insert(number);
    return found;
}
