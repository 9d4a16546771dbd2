// How far earlier runs wrote each log.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "ala/driver/log_place.h"
#include "tool/log_output.h"

namespace qvledger {

// A log of which at least one record is written.
struct WrittenLog {
    std::string server;
    std::string file; // without its directory
    std::int32_t date = 0;
    bool isComplete = false;         // the object at the end of the log says "complete":true
    std::uint64_t records = 0;       // number of records that are written
    std::int64_t firstBegin = 0;     // offset of the first record's attributes
    std::int64_t firstEnd = 0;       // end of the first record
    std::int64_t lastBegin = 0;      // offset of the attributes of the last record that is written
    std::int64_t end = 0;            // end of that record
    std::uint64_t firstChecksum = 0; // checksum of the header and the first record
    std::uint64_t checksum = 0;      // `firstChecksum` with the last record that is written

    // Notes a record that was just read from the log and written.  The checksums are those of the bytes that
    // were read, whatever has happened to the file since.
    void addRecord(ALA_acctLogHandle_t log, ALA_record_t record);
};

// The logs of all servers, as a text with one line per log.
class WrittenLogs {
public:
    // Replaces the contents by those of the text.  Returns 0, or the number of the first malformed line.
    std::size_t read(std::string_view text);
    std::string text() const;

    // Finds an open log, by its contents, among the written logs with its date, and among the server's
    // current logs, because the server renames a current log when the day is over.  Removes the log from
    // the list and returns it with its new name and date.
    std::optional<WrittenLog> take(ALA_acctLogHandle_t log, const LogName &name);
    // Adds a log, unless none of its records is written.
    void add(WrittenLog written);

private:
    std::multimap<std::string, WrittenLog> logs_; // by server
};

} // namespace qvledger
