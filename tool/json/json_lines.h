// A log as JSON Lines, one object a job record and one at the end:
//
//     {"server":"alpha","log":"alpha.20261119","record":1,"date":20261119,
//      "attributes":{"job-name":["letter"]},"documents":[{"document-name":["x"]}]}
//     {"server":"alpha","log":"alpha.20261119","records":1,"complete":true}
//
// and one for a server of which logs may be missing:
//
//     {"server":"alpha","complete":false}
//
// An attribute is an array of texts, in the order of the record; a name that comes twice stands there twice.
// The object of a record that could not be read to its end has "incomplete":true as its last member.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// Where the lines go, and what the caller hears while a log is written.
class JsonOutput {
public:
    virtual ~JsonOutput() = default;
    // An object with its line end.
    virtual void line(std::string_view text) = 0;
    // True to go on with the next record.
    virtual bool recordWritten() = 0;
    // A record's attributes ended with a failure: a code of the facility.
    virtual void recordFailed(ALA_retCode_t code) = 0;
};

struct JsonLog {
    const char *server;
    const char *file;  // without its directory
    std::int32_t date; // YYYYMMDD
    // Integers become JSON numbers, times are ISO 8601 with their offset, and those without a text null.
    bool isTyped;
};

// Writes all records of an open log, and the object at its end, as UTF-8; bytes of a text that are none
// become U+FFFD.  Gives the code that ended the walk: ALA_A_LAST_ATTRIBUTE at the end of the log,
// ALA_N_NORMAL where the caller ended it, any other for a failure.
// Throws std::bad_alloc when memory runs out.
ALA_retCode_t writeJsonLines(ALA_handle_t handle, ALA_acctLogHandle_t openLog, const JsonLog &log,
                             JsonOutput &output);

// Writes the object at the end of a log that could not be opened, or is not read.
void writeJsonOfUnreadLog(const JsonLog &log, JsonOutput &output);

// Writes the object that says that logs of a server may be missing.
void writeJsonOfIncompleteServer(const char *server, JsonOutput &output);

} // namespace qvledger
