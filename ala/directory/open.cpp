#include "ala/directory/open.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "ala/base/handle.h"
#include "ala/base/trace.h"
#include "ala/directory/dates.h"
#include "ala/directory/listing.h"
#include "ala/directory/paths.h"
#include "ala/driver/session.h"
#include "ala/log/header.h"
#include "ala/log/open_log.h"
#include "service/system.h"

using namespace qvledger;

static ALA_retCode_t noMemoryForPath() {
    return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                    "Could not allocate memory for logName in ALA_Open; ALA_A_OUT_OF_MEMORY");
}

static ALA_retCode_t convertName(NamedLog &file) {
    if (convertPath(file.path.get(), file.convertedPath))
        return ALA_N_NORMAL;
    return ALA_FAIL(ALA_A_UNKNOWN_ERR, "FA_ConvertFilePath failed in ALA_Open; ALA_A_UNKNOWN_ERR");
}

static ALA_retCode_t pathOfOldest(ALA_handle_t handle, NamedLog &file) {
    Malloced<char> oldest;
    if (ALA__GetOldestLogName(handle->svrName, handle->acctLogPath, TextOut(oldest), &file.date) !=
        ALA_N_NORMAL)
        return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE,
                        "ALA__GetOldestLogName failed in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
    file.path = pathInDirectory(handle->acctLogPath, oldest.get());
    return file.path != nullptr ? ALA_N_NORMAL : noMemoryForPath();
}

static ALA_retCode_t pathOfDate(ALA_handle_t handle, const ALA_time *date, NamedLog &file) {
    std::int32_t isToday = 0;
    if (const ALA_retCode_t result = ALA__IsTodaysDate(date, &isToday); result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__IsTodaysDate failed in ALA_Open");
    file.date = ALA__NumFromDate(date);
    file.path = isToday != 0 ? currentLogPath(handle->acctLogPath, handle->svrName)
                             : datedLogPath(handle->acctLogPath, handle->svrName, date);
    return file.path != nullptr ? ALA_N_NORMAL : noMemoryForPath();
}

static void openPath(NamedLog &file) {
    file.descriptor.reset(SYSU_Open(file.convertedPath.get(), 0));
    if (!file.descriptor.isOpen())
        ALA_DETAIL("%s cannot be opened: %s\n", file.convertedPath.get(), std::strerror(errno));
}

// Opens the current day's log instead of the dated log, if the current day's log was last changed on the
// wanted date.  Opens nothing if it was last changed on another date or cannot be opened.  Fails only if its
// path cannot be made or converted.
static ALA_retCode_t openStandBy(ALA_handle_t handle, NamedLog &file) {
    file.path = currentLogPath(handle->acctLogPath, handle->svrName);
    if (file.path == nullptr)
        return noMemoryForPath();
    if (const ALA_retCode_t result = convertName(file); result != ALA_N_NORMAL)
        return result;
    std::int32_t lastWritten = 0;
    if (dateOfLog(kCurrentTail, file.convertedPath.get(), &lastWritten) == ALA_N_NORMAL &&
        lastWritten == file.date)
        openPath(file);
    return ALA_N_NORMAL;
}

ALA_retCode_t qvledger::openFile(ALA_handle_t handle, const ALA_time *date, NamedLog &file) {
    if (const ALA_retCode_t valid = checkHandleOfLog(handle, "ALA_Open"); valid != ALA_N_NORMAL)
        return valid;
    handle->plainDays.checkZone();
    ALA_retCode_t result = date == nullptr ? pathOfOldest(handle, file) : pathOfDate(handle, date, file);
    if (result != ALA_N_NORMAL)
        return result;
    ALA_DETAIL("svrName: %s\n", handle->svrName);
    ALA_DETAIL("logName: %s\n", file.path.get());
    result = convertName(file);
    if (result != ALA_N_NORMAL)
        return result;
    openPath(file);
    if (!file.descriptor.isOpen() && date != nullptr) {
        result = openStandBy(handle, file);
        if (result != ALA_N_NORMAL)
            return result;
    }
    if (!file.descriptor.isOpen())
        return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE,
                        "SYSU_Open failed in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
    return ALA_N_NORMAL;
}

ALA_retCode_t qvledger::checkAccess(NamedLog &file) {
    std::int32_t accessOK = 0;
    file.bytes = LogFile(file.descriptor.get());
    if (const ALA_retCode_t result = lookUpPermission(file.bytes, &accessOK, &file.verNum);
        result != ALA_N_NORMAL) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s, date %d: the header cannot be read",
                        file.convertedPath.get(), file.date);
        return ALA_FAIL(result, "ALA__LookupPermission failed in ALA_Open");
    }
    if (accessOK != 1)
        return ALA_FAIL(ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE,
                        "No access to log file in ALA_Open; ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE");
    return ALA_N_NORMAL;
}

ALA_retCode_t qvledger::makeLog(NamedLog &file, ALA_acctLogHandle_t *logHandle) {
    Owned<logParams> log = makeOwned<logParams>();
    if (log == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for logHandle in ALA_Open; ALA_A_OUT_OF_MEMORY");
    log->fd = file.descriptor.release();
    log->logName = file.convertedPath.release();
    log->date = file.date;
    log->pid = _getpid();
    log->verNum = file.verNum;
    log->end = -1;
    log->bytes = std::move(file.bytes);
    static_cast<void>(_lseeki64(log->fd, log->bytes.position(), SEEK_SET));
    *logHandle = log.release();
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_Open(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                       ALA_acctLogHandle_t *outp_logHandle) {
    const FuncTrace trace("ALA_Open");
    *outp_logHandle = nullptr;
    NamedLog file;
    ALA_retCode_t result = openFile(in_alaHandle, inp_date, file);
    if (result == ALA_N_NORMAL)
        result = checkAccess(file);
    return result == ALA_N_NORMAL ? makeLog(file, outp_logHandle) : result;
}

ALA_retCode_t ALA_Close(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_acctLogHandle) {
    const FuncTrace trace("ALA_Close");
    if (const ALA_retCode_t valid = checkHandleOfLog(in_alaHandle, "ALA_Close"); valid != ALA_N_NORMAL)
        return valid;
    if (inoutp_acctLogHandle == nullptr)
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE,
                        "inoutp_acctLogHandle is NULL in ALA_Close; ALA_A_INVALID_LOG_HANDLE");
    logParams *log = *inoutp_acctLogHandle;
    if (log == nullptr || log->pid != _getpid())
        return ALA_FAIL(ALA_A_INVALID_LOG_HANDLE,
                        "*inoutp_acctLogHandle is NULL or logHandle->pid!=getpid in "
                        "ALA_Close; ALA_A_INVALID_LOG_HANDLE");
    if (log->fd == -1)
        return ALA_FAIL(ALA_A_LOG_FILE_NOT_OPEN, "logHandle->fd == -1 in ALA_Close; ALA_A_LOG_FILE_NOT_OPEN");
    static_cast<void>(_close(log->fd)); // opened for reading, so nothing can be lost
    std::free(log->logName);
    const Owned<logParams> closed(std::exchange(*inoutp_acctLogHandle, nullptr));
    return ALA_N_NORMAL;
}

const char *qvledger::logFileName(ALA_acctLogHandle_t log) {
    const char *slash = std::strrchr(log->logName, '/');
    return slash != nullptr ? slash + 1 : log->logName;
}

bool qvledger::hasNoRecord(ALA_acctLogHandle_t log) {
    return log->holdsNoRecord;
}
