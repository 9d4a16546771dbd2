// A log that is being checked.
#pragma once

#include <cstdint>

#include "ala/driver/check.h"
#include "ala/log/open_log.h"
#include "ala/repair/search.h"

struct ALA__checkedLog {
    logParams log = {}; // for the operations that read records; fd -1 until it is open
    std::int64_t size = 0;
    std::int64_t headerEnd = 0;
    std::uint32_t created = 0;
    std::uint32_t accessEntries = 0;
};

namespace qvledger {

// Hands a driver's watch to a search.
class WatchedSearch final : public SearchWatch {
public:
    explicit WatchedSearch(ALA__checkWatch &givenWatch) : watch(givenWatch) {}
    bool goOn(std::int64_t position) override { return watch.goOn(position); }

private:
    ALA__checkWatch &watch;
};

} // namespace qvledger
