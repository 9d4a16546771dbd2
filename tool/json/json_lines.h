// Writes a log as JSON Lines, one object per job record and one object at the end:
//
//     {"server":"alpha","log":"alpha.20261119","record":1,"date":20261119,
//      "attributes":{"job-name":["letter"]},"documents":[{"document-name":["x"]}]}
//     {"server":"alpha","log":"alpha.20261119","records":1,"complete":true}
//
// "complete" is true if the log was read to its end and has a record.  A server whose list of logs may be
// incomplete has an object, too:
//
//     {"server":"alpha","complete":false}
//
// An attribute is an array of values, which are strings unless the log is typed.  Attributes are in the order
// of the record; a name that occurs twice in a record occurs twice in the record's object.  The object of a
// record that could not be read to its end has "incomplete":true as its last member.
//
// share/qvledger-json.schema.json describes all lines.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// Receives the lines and events.
class JsonOutput {
public:
    virtual ~JsonOutput() = default;
    // Writes one object; the text ends with a line end.
    virtual void line(std::string_view text) = 0;
    // Called after each record.  True: continue with the next record; false: stop.
    virtual bool recordWritten(ALA_record_t record) = 0;
    // Called if the job attributes of a record could not be read to their end; code: the ALA return code.
    virtual void recordFailed(ALA_retCode_t code) = 0;
};

struct JsonLog {
    const char *server;
    const char *file;  // name of the log's file without its directory
    std::int32_t date; // YYYYMMDD
    // Write integers, reals, booleans and durations (in seconds) as JSON numbers and booleans, and times in
    // ISO 8601 with their offset.  If its text is empty, such a value becomes null.
    bool isTyped;
    std::uint64_t recordsBefore = 0; // records before the first one to write
    // The log's final object is skipped if it says "complete":true and no record is written.
    bool isCompleteBefore = false;
};

// Writes the records of an open log, and then the log's final object, in UTF-8; invalid bytes become U+FFFD.
// Begins with the log's first record, or, after continueAt() (ala/driver/log_place.h), with the record there.
// Returns ALA_A_LAST_ATTRIBUTE at the end of the log, ALA_N_NORMAL if recordWritten() returned false, or
// another code for a failure.  May throw std::bad_alloc.
// Sets *isComplete to the value of "complete".
ALA_retCode_t writeJsonLines(ALA_handle_t handle, ALA_acctLogHandle_t openLog, const JsonLog &log,
                             JsonOutput &output, bool *isComplete);

// Writes the final object of a log that could not be opened or is not read.
void writeJsonOfUnreadLog(const JsonLog &log, JsonOutput &output);

// Writes the object for a server whose list of logs may be incomplete.
void writeJsonOfIncompleteServer(const char *server, JsonOutput &output);

} // namespace qvledger
