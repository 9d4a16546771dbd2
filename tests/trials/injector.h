// What the fault injector, which is linked into qvledger_faults, and the program that drives it agree on.
#pragma once

#include <cstdint>

// "FAMILY:N:LASTS:ERROR": fail the N-th point of the family, and all behind it if LASTS is 1.  FAMILY is a
// for allocations, c for calls of the operating system.  ERROR is what errno becomes; kShortRead cuts reads
// instead.
constexpr char kFaultVariable[] = "QV_FAULT";
constexpr int kShortRead = -1;

// Where the injector leaves its account when the run ends.
constexpr int kAccountFd = 100;

struct FaultAccount {
    std::uint32_t fired;      // points that failed
    std::int32_t live;        // allocations of the program that nobody released
    std::int32_t descriptors; // still open
    bool mute;                // a write failed, all of which are the log's
    char last[20];            // the call that failed last
};
