// The registration that an ALA_handle_t points to, and the check that every operation makes on it.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "ala/ala.h"
#include "ala/base/columns.h"
#include "ala/base/plain_days.h"

struct handleData {
    std::int32_t pid;  // of the process that registered
    char *svrName;     // owned
    char *acctLogPath; // owned
    void *oidHandle;   // the open OID database

    // Values and attributes that the cursors could not return so far.  If reading a log raised this count,
    // the report lacks a part of the log.
    std::uint64_t valuesSkipped;

    ALA_timeForm_t timeForm;

    qvledger::Columns columns;     // cached names
    qvledger::PlainDays plainDays; // of the time zone at the last opening of a log

    ~handleData() {
        std::free(svrName);
        std::free(acctLogPath);
    }
};
using ALA_handleData_t = handleData;

namespace qvledger {

// ALA_N_NORMAL, or ALA_A_NOT_REGISTER and a level 5 log line that names the operation.
ALA_retCode_t checkHandle(ALA_handle_t handle, const char *operation);

// The same for ALA_Open and ALA_Close, whose log line is worded differently.
ALA_retCode_t checkHandleOfLog(ALA_handle_t handle, const char *operation);

} // namespace qvledger
