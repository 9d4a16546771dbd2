// Opening a log by its date, and closing it.
#include "ala/log/open_log.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/directory/dates.h"
#include "ala/directory/listing.h"
#include "ala/directory/paths.h"
#include "ala/driver.h"
#include "ala/log/log_file.h"
#include "ala/log/permission.h"
#include "service/system.h"

using namespace qvledger;

static ALA_retCode_t noMemoryForPath() {
    return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                    "Could not allocate memory for logName in ALA_Open; ALA_A_OUT_OF_MEMORY");
}

namespace {

struct NamedLog {
    Malloced<char> path;          // as made from directory and name
    Malloced<char> convertedPath; // as the system takes it
    Descriptor descriptor;
    LogFile bytes;
    std::int32_t date = 0;
    std::uint32_t verNum = 0;
};

} // namespace

static ALA_retCode_t convertPath(NamedLog &file) {
    if (ALA__ConvertPath(file.path.get(), file.convertedPath))
        return ALA_N_NORMAL;
    return ALA_FAIL(ALA_A_UNKNOWN_ERR, "FA_ConvertFilePath failed in ALA_Open; ALA_A_UNKNOWN_ERR");
}

static ALA_retCode_t pathOfOldest(ALA_handle_t handle, NamedLog &file) {
    Malloced<char> oldest;
    if (ALA__GetOldestLogName(handle->svrName, handle->acctLogPath, TextOut(oldest), &file.date) !=
        ALA_N_NORMAL)
        return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE,
                        "ALA__GetOldestLogName failed in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
    file.path = ALA__PathInDirectory(handle->acctLogPath, oldest.get());
    return file.path != nullptr ? ALA_N_NORMAL : noMemoryForPath();
}

static ALA_retCode_t pathOfDate(ALA_handle_t handle, const ALA_time *date, NamedLog &file) {
    std::int32_t isToday = 0;
    if (const ALA_retCode_t result = ALA__IsTodaysDate(date, &isToday); result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__IsTodaysDate failed in ALA_Open");
    file.date = ALA__NumFromDate(date);
    file.path = isToday != 0 ? ALA__CurrentLogPath(handle->acctLogPath, handle->svrName)
                             : ALA__DatedLogPath(handle->acctLogPath, handle->svrName, date);
    return file.path != nullptr ? ALA_N_NORMAL : noMemoryForPath();
}

static void openPath(NamedLog &file) {
    file.descriptor.reset(SYSU_Open(file.convertedPath.get(), 0));
    if (!file.descriptor.isOpen())
        ALA_DETAIL("%s cannot be opened: %s\n", file.convertedPath.get(), std::strerror(errno));
}

// The log of the day in progress stands in for a date on which it was last written.
static ALA_retCode_t openStandBy(ALA_handle_t handle, NamedLog &file) {
    file.path = ALA__CurrentLogPath(handle->acctLogPath, handle->svrName);
    if (file.path == nullptr)
        return noMemoryForPath();
    if (const ALA_retCode_t result = convertPath(file); result != ALA_N_NORMAL)
        return result;
    std::int32_t lastWritten = 0;
    if (ALA__GetDateFromStat(file.convertedPath.get(), &lastWritten) == ALA_N_NORMAL &&
        lastWritten == file.date)
        openPath(file);
    return ALA_N_NORMAL;
}

static ALA_retCode_t openFile(ALA_handle_t handle, const ALA_time *date, NamedLog &file) {
    ALA_retCode_t result = date == nullptr ? pathOfOldest(handle, file) : pathOfDate(handle, date, file);
    if (result != ALA_N_NORMAL)
        return result;
    ALA_DETAIL("svrName: %s\n", handle->svrName);
    ALA_DETAIL("logName: %s\n", file.path.get());
    result = convertPath(file);
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

// Reads the header.  ALA_N_NORMAL if its access list admits the caller; the first record is read next then.
static ALA_retCode_t checkAccess(NamedLog &file) {
    std::int32_t accessOK = 0;
    file.bytes = LogFile(file.descriptor.get());
    if (const ALA_retCode_t result = lookUpPermission(file.bytes, &accessOK, &file.verNum);
        result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__LookupPermission failed in ALA_Open");
    if (accessOK != 1)
        return ALA_FAIL(ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE,
                        "No access to log file in ALA_Open; ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE");
    return ALA_N_NORMAL;
}

// The file's first bytes.  Without them, or if the header is longer, the access list is checked again.
static LogFile beginningOf(const NamedLog &file) {
    constexpr std::int64_t kMost = 64 * 1024;
    LogFile beginning(file.descriptor.get());
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(file.descriptor.get(), &identity) == 0)
        static_cast<void>(beginning.need(static_cast<std::size_t>(std::min(identity.size, kMost))));
    return beginning;
}

// Checks the access list again unless the header is still the one that was checked.  So an unchanged one is
// logged once.
static ALA_retCode_t checkAccessAgain(NamedLog &file, const LogFile &before) {
    const auto size = static_cast<std::size_t>(file.bytes.position());
    LogFile present(file.descriptor.get());
    const std::uint8_t *header = size <= before.itemSize() ? present.need(size) : nullptr;
    if (header == nullptr || std::memcmp(header, before.item(), size) != 0)
        return checkAccess(file);
    file.bytes.moveTo(file.bytes.position()); // what follows may have changed
    return ALA_N_NORMAL;
}

// Opens the file and locks it, until the name leads to the locked file.  A caller whom the access list does
// not admit never gets the lock, with which it could keep other runs waiting.  Without a descriptor, and
// ALA_N_NORMAL, the driver gave up waiting.
static ALA_retCode_t openHeld(ALA_handle_t handle, const ALA_time *date, ALA__holdFile hold, NamedLog &file,
                              LogFile &before) {
    for (;;) {
        if (const ALA_retCode_t result = openFile(handle, date, file); result != ALA_N_NORMAL)
            return result;
        before = beginningOf(file); // before the check, so that a change in between shows
        if (const ALA_retCode_t result = checkAccess(file); result != ALA_N_NORMAL)
            return result;
        const int fd = file.descriptor.get();
        const char *path = file.convertedPath.get();
        if (hold(fd, path) == ALA__holdResult::GivenUp) {
            file.descriptor.reset(-1);
            return ALA_N_NORMAL;
        }
        OS_fileIdentity held = {};
        OS_fileIdentity named = {};
        const bool found = OS_IdentifyTarget(path, &named) == 0;
        if ((!found && errno != ENOENT) || OS_IdentifyDescriptor(fd, &held) != 0)
            return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE,
                            "the log cannot be looked at in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
        if (found && OS_IsSameFile(held, named))
            return ALA_N_NORMAL;
    }
}

static ALA_retCode_t openLog(ALA_handle_t handle, const ALA_time *date, ALA__holdFile hold,
                             ALA_acctLogHandle_t *logHandle) {
    *logHandle = nullptr;
    if (const ALA_retCode_t valid = ALA__CheckHandleOfLog(handle, "ALA_Open"); valid != ALA_N_NORMAL)
        return valid;
    handle->plainDays.checkZone();
    NamedLog file;
    LogFile before;
    const ALA_retCode_t opened =
        hold == nullptr ? openFile(handle, date, file) : openHeld(handle, date, hold, file, before);
    if (opened != ALA_N_NORMAL || !file.descriptor.isOpen())
        return opened;
    // Whatever is written from here on will show.
    OS_fileIdentity identity = {};
    const bool isKnown = hold != nullptr && OS_IdentifySettled(file.descriptor.get(), &identity) == 0;
    if (const ALA_retCode_t result = hold == nullptr ? checkAccess(file) : checkAccessAgain(file, before);
        result != ALA_N_NORMAL)
        return result;

    Owned<logParams> log = makeOwned<logParams>();
    if (log == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for logHandle in ALA_Open; ALA_A_OUT_OF_MEMORY");
    *log = {.fd = file.descriptor.release(),
            .logName = file.convertedPath.release(),
            .date = file.date,
            .pid = _getpid(),
            .verNum = file.verNum,
            .todaysLog = 0,
            .end = -1,
            .readError = 0,
            .holdsNoRecord = false,
            .isKnown = isKnown,
            .file = identity,
            .bytes = std::move(file.bytes)};
    static_cast<void>(_lseeki64(log->fd, log->bytes.position(), SEEK_SET));
    *logHandle = log.release();
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_Open(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                       ALA_acctLogHandle_t *outp_logHandle) {
    const FuncTrace trace("ALA_Open");
    return openLog(in_alaHandle, inp_date, nullptr, outp_logHandle);
}

ALA_retCode_t ALA__OpenToDelete(ALA_handle_t in_alaHandle, const ALA_time *inp_date, ALA__holdFile in_hold,
                                ALA_acctLogHandle_t *outp_logHandle) {
    const FuncTrace trace("ALA_Open");
    return openLog(in_alaHandle, inp_date, in_hold, outp_logHandle);
}

ALA_retCode_t ALA_Close(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_acctLogHandle) {
    const FuncTrace trace("ALA_Close");
    if (const ALA_retCode_t valid = ALA__CheckHandleOfLog(in_alaHandle, "ALA_Close"); valid != ALA_N_NORMAL)
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
    static_cast<void>(_close(log->fd)); // only read from: nothing can be lost
    std::free(log->logName);
    const Owned<logParams> closed(std::exchange(*inoutp_acctLogHandle, nullptr));
    return ALA_N_NORMAL;
}

const char *ALA__LogFileName(ALA_acctLogHandle_t in_log) {
    const char *slash = std::strrchr(in_log->logName, '/');
    return slash != nullptr ? slash + 1 : in_log->logName;
}

bool ALA__HoldsNoRecord(ALA_acctLogHandle_t in_log) {
    return in_log->holdsNoRecord;
}

const char *ALA__KeepRead(ALA_acctLogHandle_t in_log, ALA__readLog &outp_read) {
    if (in_log->end < 0)
        return "it was not read to its end";
    if (!in_log->isKnown)
        return "its file cannot be identified";
    outp_read.identity = in_log->file;
    outp_read.end = in_log->end;
    outp_read.path.reset(_strdup(in_log->logName));
    outp_read.file.reset(_dup(in_log->fd));
    return outp_read.path != nullptr && outp_read.file.isOpen() ? nullptr : "its file cannot be kept open";
}
