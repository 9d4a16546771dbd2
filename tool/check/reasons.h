// Texts for the outcomes of a check.
#pragma once

#include <string>

#include "ala/driver/check.h"
#include "tool/check/log_table.h"

namespace qvledger {

// Appends the system's reason to a text; error: errno, or 0 for no reason.
std::string withReason(const char *text, int error);

// State and reason of a log that was not read.
struct Unread {
    LogState state;
    std::string reason;
};
Unread whyUnread(const CheckResult &result);

// The reason why a log could not be saved.
std::string whyNotSaved(const CheckResult &result);

} // namespace qvledger
