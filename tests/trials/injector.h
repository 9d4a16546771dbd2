// The interface between the fault injector, which is linked into qvledger_faults, and its driver, faults.
#pragma once

#include <cstdint>

// "FAMILY:N:LASTS:ERROR": the N-th point of the family fails; if LASTS is 1, all later points fail, too.
// FAMILY is "a" (allocations) or "c" (system calls).  ERROR is errno's value, or kShortRead to shorten reads.
constexpr char kFaultVariable[] = "QV_FAULT";
constexpr int kShortRead = -1;

// The descriptor to which the injector writes its account at the end of the run.
constexpr int kAccountFd = 100;

struct FaultAccount {
    std::uint32_t fired;      // points that failed
    std::int32_t live;        // blocks that the program itself did not release; 0 under sanitizers
    std::int32_t descriptors; // descriptors that are still open
    bool mute;                // a write to standard error failed
    char last[20];            // name of the function that failed last
};
