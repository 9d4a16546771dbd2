// The demonstration: a root with logs of some past days and of today, which admit the caller in different
// ways, but for one that admits nobody.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "samples/callers_account.h"
#include "samples/sample_root.h"

namespace samples {

struct DemoOptions {
    std::string server = "alpha";
    std::uint64_t jobs = 12; // in each log
    std::uint32_t days = 5;  // past ones
};

struct Total {
    std::uint64_t jobs = 0, sheets = 0;
};
using Totals = std::map<std::string, Total>; // by the name of the user

// Gives what the users have in all logs that admit the caller.  Throws what its parts throw, all of it
// derived from std::exception.
Totals layDemo(const SampleRoot &root, const Account &caller, const DemoOptions &options);

} // namespace samples
