#include "ala/base/handle.h"

#include "ala/base/trace.h"
#include "platform/os.h"

using namespace qvledger;

void *const ALA_nullHandle = nullptr;
void *const ALA_nullAcctLogHandle = nullptr;
void *const ALA_nullRecord = nullptr;

static bool isValid(ALA_handle_t handle) {
    return handle != nullptr && handle->svrName != nullptr && handle->acctLogPath != nullptr &&
           handle->pid == _getpid();
}

// Checks the handle, and logs `line` if it is invalid.  line: a printf format whose only argument is the name
// of the operation.
static ALA_retCode_t check(ALA_handle_t handle, const char *operation, const char *line) {
    return isValid(handle) ? ALA_N_NORMAL : ALA_FAIL(ALA_A_NOT_REGISTER, line, operation);
}

ALA_retCode_t qvledger::checkHandle(ALA_handle_t handle, const char *operation) {
    return check(handle, operation,
                 "handle, handle->svrName, handle->acctLogPath is NULL or handle->pid!=getpid in %s; "
                 "ALA_A_NOT_REGISTER");
}

ALA_retCode_t qvledger::checkHandleOfLog(ALA_handle_t handle, const char *operation) {
    return check(handle, operation,
                 "handle, handle->svrName or handle->acctLogPath is NULL or handle->pid != getpid in %s; "
                 "ALA_A_NOT_REGISTER");
}
