// The registration behind an ALA_handle_t, and the check that every operation makes on it.
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

    // Values, and attributes, that the cursors could not deliver so far.  A log whose walk raised this number
    // has something in it that no report shows.
    std::uint64_t valuesPassedOver;

    ALA_timeForm_t timeForm;

    qvledger::Columns columns;     // what the cursors remember from record to record
    qvledger::PlainDays plainDays; // of the time zone in which the last log was opened

    ~handleData() {
        std::free(svrName);
        std::free(acctLogPath);
    }
};
using ALA_handleData_t = handleData;

namespace qvledger {

// The check that every operation makes on its handle.  ALA_N_NORMAL, or ALA_A_NOT_REGISTER with a level 5
// line that names the operation.
ALA_retCode_t checkHandle(ALA_handle_t handle, const char *operation);

// The same for ALA_Open and ALA_Close, whose line has words of its own.
ALA_retCode_t checkHandleOfLog(ALA_handle_t handle, const char *operation);

} // namespace qvledger
