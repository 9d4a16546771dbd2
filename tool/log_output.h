// What a run makes of each log: a report, or another form of the same records.
#pragma once

#include <cstdint>
#include <cstdio>

#include "ala/ala.h"

class LogOutput {
public:
    virtual ~LogOutput() = default;
    // Writes all records of the open log of a date (YYYYMMDD), until mustStop() (tool/stop.h) says so.  True
    // when the walk ended at the log's end and nothing in it had to be passed over; failures were told to the
    // user.
    virtual bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, std::int32_t date,
                       std::FILE *stream) = 0;
    // No further log follows.
    virtual void end() {}
};
