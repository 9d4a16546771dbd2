// The demonstration: a root with logs of past days and today.  With two past days or more, one log
// refuses the current user.  The other logs admit the user through different kinds of access list entries.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "samples/callers_account.h"
#include "samples/sample_root.h"

namespace samples {

struct DemoOptions {
    std::string server = "alpha";
    std::uint64_t jobs = 12; // jobs in each log
    std::uint32_t days = 5;  // past days with a log
};

struct Total {
    std::uint64_t jobs = 0, sheets = 0;
};
using Totals = std::map<std::string, Total>; // the key is the user name

// Writes the registry file and the logs.  Returns the totals of each user in the logs that admit `caller`.
// Throws exceptions derived from std::exception.
Totals layDemo(const SampleRoot &root, const Account &caller, const DemoOptions &options);

} // namespace samples
