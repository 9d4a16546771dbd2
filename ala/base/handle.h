// The registration that an ALA_handle_t points to, and the check of handles at the start of every operation.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "ala/ala.h"
#include "ala/base/columns.h"
#include "ala/base/plain_days.h"

struct handleData {
    std::int32_t pid;  // process that registered
    char *svrName;     // released with the handle
    char *acctLogPath; // released with the handle
    void *oidHandle;   // the open OID database

    // Number of values and attributes that the cursors could not return completely.  If it grows while a log
    // is read, the report of that log is incomplete.
    std::uint64_t valuesSkipped;

    ALA_timeForm_t timeForm;

    qvledger::Columns columns;     // cached attribute names
    qvledger::PlainDays plainDays; // of the time zone that was set when a log was last opened

    ~handleData() {
        std::free(svrName);
        std::free(acctLogPath);
    }
};
using ALA_handleData_t = handleData;

namespace qvledger {

// Returns ALA_N_NORMAL if this process registered the handle.  Otherwise logs a line of level 5 with the name
// of the operation, and returns ALA_A_NOT_REGISTER.
ALA_retCode_t checkHandle(ALA_handle_t handle, const char *operation);

// Like checkHandle, for ALA_Open and ALA_Close.  Their log line is worded differently.
ALA_retCode_t checkHandleOfLog(ALA_handle_t handle, const char *operation);

} // namespace qvledger
