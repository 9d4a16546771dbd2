#include "ala/ala.h"

#include <cstdlib>
#include <mutex>

#include "ala/access/domain.h"
#include "ala/base/concatenate.h"
#include "ala/base/handle.h"
#include "ala/base/lock.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/registration/environment.h"
#include "service/clock.h"
#include "service/oid/oid.h"
#include "service/status.h"

using namespace qvledger;

static std::int32_t mutexInit = 0; // control word of THR_Once

static void ALA__InitOnce() {
    GENU_TimeZoneInit();
}

// Loads the server's settings into the environment, and sets the path to QV_ROOT followed by "/share/oid"
// (null when memory runs out).  Locks a mutex, because another thread could load another server's QV_ROOT
// between the two steps.
static ALA_retCode_t defaultOidPath(const char *svrName, Malloced<char> &path) {
    static std::mutex environmentLock;
    const std::lock_guard guard(environmentLock);
    Malloced<char> serviceName;
    if (ALA__GetServiceName(svrName, kServerTypeSpooler, TextOut(serviceName)) != 0)
        return ALA_FAIL(ALA_A_SYSTEM_ERR,
                        "ALA__GetServiceName failed for spooler %s in ALA_Register; ALA_A_SYSTEM_ERR",
                        svrName);
    if (ALA__SetEnvironmentVariables(serviceName.get()) != 0)
        return ALA_FAIL(ALA_A_SYSTEM_ERR,
                        "ALA__SetEnvironmentVariables failed for server %s in ALA_Register; ALA_A_SYSTEM_ERR",
                        serviceName.get());
    const char *root = std::getenv("QV_ROOT");
    if (root == nullptr)
        return ALA_FAIL(ALA_A_SYSTEM_ERR, "getenv on QV_ROOT failed in ALA_Register; ALA_A_SYSTEM_ERR");
    path.reset(_ALA_AddChar(root, "/share/oid"));
    return ALA_N_NORMAL;
}

static ALA_retCode_t openOidDatabase(const char *path, void **oidHandle) {
    const StatusList status;
    std::int32_t result = OID_Init(status, path, 0);
    if (result != 0)
        return ALA_FAIL(ALA_A_OID_ERROR, "OID_Init failed in ALA_Register; oid return = 0x%X ALA_A_OID_ERROR",
                        static_cast<unsigned>(result));
    result = OID_OpenDb(status, path, 0, 0, oidHandle);
    if (result == 0)
        return ALA_N_NORMAL;
    OID_Term();
    return ALA_FAIL(ALA_A_OID_ERROR, "OID_OpenDb failed in ALA_Register; oid return = 0x%X ALA_A_OID_ERROR",
                    static_cast<unsigned>(result));
}

ALA_retCode_t ALA_Register(const char *inp_svrName, const char *inp_acctLogPath, const char *inp_oidDbPath,
                           ALA_handle_t *outp_alaHandle) {
    const FuncTrace trace("ALA_Register");
    *outp_alaHandle = nullptr;
    if (inp_svrName == nullptr)
        return ALA_FAIL(ALA_A_INVALID_SERVER_NAME,
                        "inp_svrName is NULL for ALA_Register; ALA_A_INVALID_SERVER_NAME");
    if (inp_acctLogPath == nullptr)
        return ALA_FAIL(ALA_A_INVALID_LOG_PATH_NAME,
                        "inp_acctLogPath is NULL for ALA_Register;ALA_A_INVALID_LOG_PATH_NAME");

    Owned<handleData> handle = makeOwned<handleData>();
    if (handle == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for handle; ALA_A_OUT_OF_MEMORY");
    handle->pid = _getpid();
    handle->svrName = _strdup(inp_svrName);
    if (handle->svrName == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for handle->svrName; ALA_A_OUT_OF_MEMORY");
    handle->acctLogPath = _strdup(inp_acctLogPath);
    if (handle->acctLogPath == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for handle->acctLogPath; ALA_A_OUT_OF_MEMORY");

    Malloced<char> oidPath;
    if (inp_oidDbPath != nullptr)
        oidPath.reset(_strdup(inp_oidDbPath));
    else if (const ALA_retCode_t result = defaultOidPath(inp_svrName, oidPath); result != ALA_N_NORMAL)
        return result;
    if (oidPath == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for oidPath; ALA_A_OUT_OF_MEMORY");
    ALA_DETAIL("ALA_Register - oidPath: %s\n", oidPath.get());
    if (const ALA_retCode_t result = openOidDatabase(oidPath.get(), &handle->oidHandle);
        result != ALA_N_NORMAL)
        return result;

    // A failure of these calls shows later: a mutex cannot be locked, or the machine's domain is null.
    static_cast<void>(THR_Once(&mutexInit, ALA__InitOnce));
    ALA__InitMutex();
    ALA__EACL_Init();
    *outp_alaHandle = handle.release();
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_SetTimeForm(ALA_handle_t alaHandle, ALA_timeForm_t form) {
    const FuncTrace trace("ALA_SetTimeForm");
    if (const ALA_retCode_t valid = checkHandle(alaHandle, "ALA_SetTimeForm"); valid != ALA_N_NORMAL)
        return valid;
    if (form != ALA_TIME_AS_REPORTED && form != ALA_TIME_ISO_8601)
        return ALA_FAIL(ALA_A_INVALID_ARG, "form %d is unknown in ALA_SetTimeForm; ALA_A_INVALID_ARG", form);
    alaHandle->timeForm = form;
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_Unregister(ALA_handle_t *inoutp_alaHandle) {
    const FuncTrace trace("ALA_Unregister");
    if (inoutp_alaHandle == nullptr)
        return checkHandle(nullptr, "ALA_Unregister");
    if (const ALA_retCode_t valid = checkHandle(*inoutp_alaHandle, "ALA_Unregister"); valid != ALA_N_NORMAL)
        return valid;

    const Owned<handleData> handle(*inoutp_alaHandle);
    ALA__EACL_Term();
    THR_TermMutex(&localeLock);
    THR_TermMutex(&timeLock);
    const StatusList status;
    OID_CloseDb(status, &handle->oidHandle);
    OID_Term();
    *inoutp_alaHandle = nullptr;
    return ALA_N_NORMAL;
}
