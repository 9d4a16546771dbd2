// The demonstration: a root with logs of past days and today.
//
// Unless the options name the users and groups to admit, the logs admit the current user through different
// kinds of access list entries.  With two past days or more, one log then refuses the user.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "samples/callers_account.h"
#include "samples/sample_root.h"

namespace samples {

struct DemoOptions {
    std::string server = "alpha";
    std::uint32_t jobs = 12;             // jobs in each log
    std::uint32_t days = 5;              // past days with a log
    std::uint32_t failed = 0;            // every Nth job fails; 0: the state of jobs is not logged
    std::uint32_t logVersion = 3;        // 1 to 3
    std::vector<AccountName> users = {}; // if there are users or groups, all logs admit exactly these
    std::vector<AccountName> groups = {};
    std::optional<std::time_t> today = {}; // a time of the day of the newest log; default: the current day
    bool cut = false;                      // cut the log of yesterday inside its last record
    bool zeros = false;                    // replace bytes in the middle of the oldest log with zeros
};

struct Total {
    std::uint64_t jobs = 0, sheets = 0;
};
using Totals = std::map<std::string, Total>; // the key is the user name

// Writes the registry file and the logs.  Returns the totals of each user in the logs that admit `caller` or
// the users and groups of the options.  Damaged records are included.
// Throws exceptions derived from std::exception.
Totals layDemo(const SampleRoot &root, const Account &caller, const DemoOptions &options);

} // namespace samples
