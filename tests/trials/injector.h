// The interface between the fault injector, which is linked into qvledger_faults, and its driver, faults.
#pragma once

#include <cstdint>

// "FAMILY:N:LASTS:ERROR": the N-th point of the family fails, and all later points if LASTS is 1.  FAMILY is
// a for allocations, c for system calls.  ERROR is the value for errno; kShortRead shortens reads instead.
constexpr char kFaultVariable[] = "QV_FAULT";
constexpr int kShortRead = -1;

// The descriptor to which the injector writes its account at the end of the run.
constexpr int kAccountFd = 100;

struct FaultAccount {
    std::uint32_t fired;      // points that failed
    std::int32_t live;        // allocations that the program did not release
    std::int32_t descriptors; // descriptors that are still open
    bool mute;                // a write to standard error failed
    char last[20];            // name of the call that failed last
};
