// The job records of a log as JSON Lines, one object a record:
//
//     {"date":20261119,"attributes":{"job-name":["letter"]},"documents":[{"document-name":["x"]}]}
//
// An attribute is an array of texts, in the order of the record; a name that comes twice stands there twice.
// The object of a record that could not be read to its end has "incomplete":true as its last member.
#pragma once

#include <cstdint>
#include <cstdio>

#include "ala/ala.h"

// What the caller hears while a log is written.
class JsonEvents {
public:
    virtual ~JsonEvents() = default;
    // True to go on with the next record.
    virtual bool recordWritten() = 0;
    // A record's attributes ended with a failure: a code of the facility.
    virtual void recordFailed(ALA_retCode_t code) = 0;
};

// Writes all records of an open log, dated date (YYYYMMDD), as UTF-8; bytes of a value that are none
// become U+FFFD.  Gives the code that ended the walk: ALA_A_LAST_ATTRIBUTE at the end of the log,
// ALA_N_NORMAL where the caller ended it, any other for a failure.  Failures to write stay with the stream.
// Throws std::bad_alloc when memory runs out.
ALA_retCode_t writeJsonLines(ALA_handle_t handle, ALA_acctLogHandle_t log, std::int32_t date,
                             std::FILE *stream, JsonEvents &events);
