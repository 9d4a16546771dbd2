// What the trials of live logs share: how long they last, and records whose lines can be checked.
#pragma once

#include <cstdlib>
#include <string>

#include "tests/support/run_tool.h"

// QVLEDGER_LIVE_ROUNDS sets how many rounds there are.
inline int roundsOr(int in_usual) {
    const char *wanted = std::getenv("QVLEDGER_LIVE_ROUNDS");
    return wanted != nullptr ? std::atoi(wanted) : in_usual;
}

constexpr char kHeader[] = "job-name\tjob-comment";

inline std::string commentOf(int in_number) {
    return std::string(static_cast<std::size_t>(in_number * 97 % 5000),
                       static_cast<char>('a' + in_number % 26));
}

inline std::string lineOf(int in_number) {
    return std::to_string(in_number) + '\t' + commentOf(in_number);
}

inline samples::Log logOf(int in_first, int in_end) {
    samples::Log log;
    for (int number = in_first; number < in_end; ++number)
        log.job(jobOf({{"job-name", {std::to_string(number)}}, {"job-comment", {commentOf(number)}}}));
    return log;
}

inline samples::Bytes recordsOf(int in_first, int in_end) {
    return logOf(in_first, in_end).bytes().substr(samples::Log().size());
}
