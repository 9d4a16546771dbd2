// Opens and locks a log that will be deleted, and keeps it open after it was read.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ala/base/trace.h"
#include "ala/directory/open.h"
#include "ala/driver/deletion.h"
#include "ala/log/open_log.h"

using namespace qvledger;

// Reads the start of the file, so that the header can be compared later.  If reading fails or the header is
// longer than this start, checkAccessAgain() checks the access list without a comparison.
static LogFile readStart(const NamedLog &file) {
    constexpr std::int64_t kMost = 64 * 1024;
    LogFile beginning(file.descriptor.get());
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(file.descriptor.get(), &identity) == 0)
        static_cast<void>(beginning.need(static_cast<std::size_t>(std::min(identity.size, kMost))));
    return beginning;
}

// Checks the access list again unless the header is known to be unchanged.  A second check of an unchanged
// header would repeat its log entries.
static ALA_retCode_t checkAccessAgain(NamedLog &file, const LogFile &before) {
    const auto size = static_cast<std::size_t>(file.bytes.position());
    LogFile present(file.descriptor.get());
    const std::uint8_t *header = size <= before.itemSize() ? present.need(size) : nullptr;
    if (header == nullptr || std::memcmp(header, before.item(), size) != 0)
        return checkAccess(file);
    file.bytes.moveTo(file.bytes.position()); // drops bytes read ahead, because they may have changed
    return ALA_N_NORMAL;
}

// Opens and locks the file of a date.  Starts again if the name then leads to another file or to none.
// Checks the access list before locking, so that a user whom the list does not admit cannot make other
// processes wait.  Returns the codes of ALA_Open; ALA_N_NORMAL and a closed descriptor if the driver stopped
// waiting.
static ALA_retCode_t openLocked(ALA_handle_t handle, const ALA_time *date, FileLocker lock, NamedLog &file,
                                LogFile &before) {
    for (;;) {
        if (const ALA_retCode_t result = openFile(handle, date, file); result != ALA_N_NORMAL)
            return result;
        before = readStart(file); // read before the check, so that a later change is noticed
        if (const ALA_retCode_t result = checkAccess(file); result != ALA_N_NORMAL)
            return result;
        const int fd = file.descriptor.get();
        const char *path = file.convertedPath.get();
        if (lock(fd, path) == LockResult::GivenUp) {
            file.descriptor.reset(-1);
            return ALA_N_NORMAL;
        }
        OS_fileIdentity locked = {};
        OS_fileIdentity named = {};
        const bool found = OS_IdentifyTarget(path, &named) == 0;
        if ((!found && errno != ENOENT) || OS_IdentifyDescriptor(fd, &locked) != 0)
            return ALA_FAIL(
                ALA_A_FAIL_TO_OPEN_LOG_FILE,
                "the file of the log cannot be examined in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
        if (found && OS_IsSameFile(locked, named))
            return ALA_N_NORMAL;
    }
}

ALA_retCode_t qvledger::openForDeletion(ALA_handle_t handle, const ALA_time *date, FileLocker lock,
                                        ALA_acctLogHandle_t *logHandle) {
    const FuncTrace trace("ALA_Open");
    *logHandle = nullptr;
    NamedLog file;
    LogFile before;
    if (const ALA_retCode_t result = openLocked(handle, date, lock, file, before);
        result != ALA_N_NORMAL || !file.descriptor.isOpen())
        return result;
    // Any later change of the file will be visible as a difference from this identity.
    OS_fileIdentity identity = {};
    const bool isKnown = OS_IdentifySettled(file.descriptor.get(), &identity) == 0;
    if (const ALA_retCode_t result = checkAccessAgain(file, before); result != ALA_N_NORMAL)
        return result;
    if (const ALA_retCode_t result = makeLog(file, logHandle); result != ALA_N_NORMAL)
        return result;
    (*logHandle)->isKnown = isKnown;
    (*logHandle)->file = identity;
    return ALA_N_NORMAL;
}

const char *qvledger::keepReadLog(ALA_acctLogHandle_t log, ReadLog &read) {
    if (log->end < 0)
        return "it was not read completely";
    if (!log->isKnown)
        return "its file cannot be identified";
    read.identity = log->file;
    read.end = log->end;
    read.path.reset(_strdup(log->logName));
    read.file.reset(_dup(log->fd));
    return read.path != nullptr && read.file.isOpen() ? nullptr : "its file cannot be kept open";
}
