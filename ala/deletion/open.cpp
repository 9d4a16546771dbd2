// Opening a log that is to be deleted, and keeping it open after it was read.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ala/base/trace.h"
#include "ala/directory/open.h"
#include "ala/driver/deletion.h"
#include "ala/log/open_log.h"

using namespace qvledger;

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
static ALA_retCode_t openLocked(ALA_handle_t handle, const ALA_time *date, FileLocker lock, NamedLog &file,
                                LogFile &before) {
    for (;;) {
        if (const ALA_retCode_t result = openFile(handle, date, file); result != ALA_N_NORMAL)
            return result;
        before = beginningOf(file); // before the check, so that a change in between shows
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
            return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE,
                            "the log cannot be looked at in ALA_Open; ALA_A_FAIL_TO_OPEN_LOG_FILE");
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
    // Anything written from here on will show.
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
        return "it was not read to its end";
    if (!log->isKnown)
        return "its file cannot be identified";
    read.identity = log->file;
    read.end = log->end;
    read.path.reset(_strdup(log->logName));
    read.file.reset(_dup(log->fd));
    return read.path != nullptr && read.file.isOpen() ? nullptr : "its file cannot be kept open";
}
