// How far earlier runs wrote each log.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ala/driver/log_place.h"
#include "tool/log_output.h"

namespace qvledger {

// A log of which at least one record is written.
struct WrittenLog {
    std::string server;
    std::string file; // without its directory
    std::int32_t date = 0;
    bool isComplete = false; // the object at the end of the log says "complete":true
    std::uint64_t records = 0;
    LogPlace place;             // after the last record that is written
    std::uint64_t checksum = 0; // of the log at this place

    // Notes a record that was just read from the log and written.
    void addRecord(ALA_acctLogHandle_t log);
};

// The logs of all servers, as a text with one line per log.
class WrittenLogs {
public:
    // Replaces the contents by those of the text.  An empty text means no logs.  Returns 0, or the number of
    // the first malformed line.
    std::size_t read(std::string_view text);
    std::string text() const;

    // Finds an open log, by its contents, among the written logs with its date, and among the server's
    // current logs, because the server renames a current log when the day is over.  Removes the log from
    // the list and returns it with its new name and date.
    std::optional<WrittenLog> take(ALA_acctLogHandle_t log, const LogName &name);
    // Adds a log whose `records` are written.  Does nothing if the log's checksum cannot be computed, so that
    // the next run writes these records again.
    void add(WrittenLog written, ALA_acctLogHandle_t log);

private:
    std::vector<WrittenLog> logs_;
};

} // namespace qvledger
