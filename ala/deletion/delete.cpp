// Deletes the log of a past day, and restores logs after an interrupted deletion.
#include <cerrno>
#include <chrono>
#include <cstring>

#include "ala/base/concatenate.h"
#include "ala/base/handle.h"
#include "ala/base/trace.h"
#include "ala/directory/dates.h"
#include "ala/directory/paths.h"
#include "ala/directory/scan.h"
#include "ala/driver/deletion.h"
#include "service/system.h"

using namespace qvledger;

// If the system cannot block a log's writers, the log is deleted only if it has not changed for this long.
constexpr std::chrono::hours kQuiet(1);

static ALA_retCode_t refuseToday(const ALA_time *date) {
    std::int32_t isToday = 0;
    if (ALA__IsTodaysDate(date, &isToday) != ALA_N_NORMAL)
        return ALA_FAIL(ALA_A_FAIL_TO_GET_TIME,
                        "GENU_GetCurrentTime failed in ALA_Delete; ALA_A_FAIL_TO_GET_TIME");
    if (isToday == 0)
        return ALA_N_NORMAL;
    return ALA_EXPECTED(ALA_A_TRY_TO_DELETE_CUR_DAY_LOG,
                        "Trying to delete current day's file, year: %d, month: %d, day: %din ALA_Delete; "
                        "ALA_A_TRY_TO_DELETE_CUR_DAY_LOG",
                        date->year, date->month, date->day);
}

// Checks the arguments of a deletion, and sets `converted` to the path of the log.
static ALA_retCode_t pathToDelete(ALA_handle_t alaHandle, const ALA_time *date, Malloced<char> &converted) {
    if (const ALA_retCode_t valid = checkHandle(alaHandle, "ALA_Delete"); valid != ALA_N_NORMAL)
        return valid;
    if (date == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "inp_date is NULL in ALA_Delete; ALA_A_INVALID_ARG");
    const Malloced<char> path = datedLogPath(alaHandle->acctLogPath, alaHandle->svrName, date);
    if (path == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for logName in ALA_Delete; ALA_A_OUT_OF_MEMORY");
    if (const ALA_retCode_t result = refuseToday(date); result != ALA_N_NORMAL)
        return result;
    if (!convertPath(path.get(), converted))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "FA_ConvertFilePath failed in ALA_Delete; ALA_A_UNKNOWN_ERR");
    return ALA_N_NORMAL;
}

static ALA_retCode_t failToUnlink() {
    return ALA_FAIL(ALA_A_FAIL_TO_UNLINK, "Failed to unlink file in ALA_Delete; ALA_A_FAIL_TO_UNLINK");
}

ALA_retCode_t ALA_Delete(ALA_handle_t in_alaHandle, const ALA_time *inp_date) {
    const FuncTrace trace("ALA_Delete");
    Malloced<char> path;
    if (const ALA_retCode_t result = pathToDelete(in_alaHandle, inp_date, path); result != ALA_N_NORMAL)
        return result;
    ALA_DETAIL("Unlinking %s", path.get());
    return _unlink(path.get()) == -1 ? failToUnlink() : ALA_N_NORMAL;
}

// ---- Deleting a log that was read ----

// Compares the file of this name with the log that was read.  Returns null if it is the same file and
// unchanged, otherwise the reason why the file must stay.
static const char *difference(const char *path, const ReadLog &read) {
    OS_fileIdentity present = {};
    // Does not follow a symbolic link, because removing a name does not follow links either.
    if (OS_IdentifyName(path, &present) != 0 || !OS_IsSameFile(present, read.identity))
        return "it is not the file that was read";
    if (present.size != read.end)
        return "it is not as long as what was read of it";
    // The size is not enough, because overwriting does not change it.
    return present.modified != read.identity.modified ? "it was written to since it was opened" : nullptr;
}

// Like difference(), but for a file that this process has not yet renamed.  If the file still has the name
// under which it was opened, its change time must be the same, too.  The former log of the day in progress
// has a new change time, because the server renamed it.
static const char *differenceInPlace(const char *path, const ReadLog &read) {
    if (const char *why = difference(path, read); why != nullptr)
        return why;
    OS_fileIdentity present = {};
    if (OS_IdentifyDescriptor(read.file.get(), &present) != 0)
        return "it cannot be examined";
    const bool sameName = std::strcmp(path, read.path.get()) == 0;
    return sameName && present.changed != read.identity.changed ? "it was changed since it was opened"
                                                                : nullptr;
}

static void reportLeftAside(const char *path, const char *aside, const char *why, DeletionWatch &watch) {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s stays under the name %s: %s", path, aside, why);
    watch.leftAside(aside, why);
}

static bool renameBack(const char *path, const char *aside, DeletionWatch &watch) {
    const int moved = OS_MoveName(aside, path);
    if (moved != OS_DONE)
        reportLeftAside(path, aside,
                        moved == OS_TAKEN ? "another file has its own name" : std::strerror(errno), watch);
    return moved == OS_DONE;
}

static ALA_retCode_t keep(const char *path, const char *why, bool *kept) {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s is not deleted: %s", path, why);
    *kept = true;
    return ALA_N_NORMAL;
}

static bool isQuiet(const ReadLog &read) {
    using namespace std::chrono;
    const auto now = floor<seconds>(system_clock::now()).time_since_epoch();
    return now - seconds(read.identity.modifiedSeconds) >= kQuiet;
}

// Blocks other writers of the renamed file, compares it again with the log that was read, and asks the watch.
// Returns null if the file can be removed, otherwise the reason why it must stay.
static const char *differenceAside(const char *aside, const ReadLog &read, DeletionWatch &watch) {
    const int blocked = OS_LockOutWriters(read.file.get(), aside, read.identity);
    if (blocked == OS_TAKEN)
        return "another program has it open for writing";
    if (blocked == OS_REFUSED && !isQuiet(read))
        return "it was written to within the last hour, and the system does not show who has it open";
    const char *why = difference(aside, read);
    return why != nullptr ? why : watch.objection();
}

// Renames the log to a private name, compares it again, and removes it.  Under the log's own name, another
// process could replace the file after the comparison.  Other processes do not use the private name while the
// log is locked.
static ALA_retCode_t removeRead(const char *path, const char *aside, const ReadLog &read,
                                DeletionWatch &watch, bool *kept) {
    OS_fileIdentity present = {};
    // Stop if the file is missing: a file that appears later is not the one that was read.
    if (OS_IdentifyName(path, &present) != 0)
        return failToUnlink();
    if (const char *why = differenceInPlace(path, read); why != nullptr)
        return keep(path, why, kept);
    switch (OS_MoveName(path, aside)) {
    case OS_DONE:
        break;
    case OS_TAKEN:
        return keep(path, "another file already has its temporary name", kept);
    default:
        if (errno == EBUSY)
            return keep(path, "another program has it open and does not let it be moved", kept);
        if (errno == EINVAL || errno == ENOSYS)
            return keep(path, "its file system cannot give it another name safely", kept);
        return failToUnlink();
    }
    const char *why = differenceAside(aside, read, watch);
    if (why == nullptr) {
        ALA_DETAIL("Unlinking %s", path);
        if (OS_RemoveFile(read.file.get(), aside) == 0)
            return ALA_N_NORMAL;
    }
    const bool isBack = renameBack(path, aside, watch);
    if (why == nullptr)
        return failToUnlink();
    if (!isBack)
        *kept = true;
    return isBack ? keep(path, why, kept) : ALA_N_NORMAL;
}

ALA_retCode_t qvledger::deleteReadLog(ALA_handle_t handle, const ALA_time *date, const ReadLog &read,
                                      DeletionWatch &watch, bool *kept) {
    const FuncTrace trace("ALA_Delete");
    *kept = false;
    Malloced<char> path;
    if (const ALA_retCode_t result = pathToDelete(handle, date, path); result != ALA_N_NORMAL)
        return result;
    const Malloced<char> aside = asidePath(path.get());
    if (aside == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for logName in ALA_Delete; ALA_A_OUT_OF_MEMORY");
    return removeRead(path.get(), aside.get(), read, watch, kept);
}

// ---- Logs that an interrupted process left renamed ----

namespace {

class LogsAside final : public EntryVisitor {
public:
    explicit LogsAside(DeletionWatch &watch) : watch_(watch) {}

    ALA_retCode_t visit(const FoundEntry &entry) override {
        if (!isAside(entry.tail))
            return ALA_N_NORMAL;
        const Malloced<char> aside = pathInDirectory(entry.directory, entry.name);
        const Malloced<char> path = pathInDirectory(entry.directory, entry.name);
        if (aside == nullptr || path == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to look for logs that were about to be deleted");
        path.get()[std::strlen(path.get()) - kAside.size()] = '\0';
        restoreIfUnused(path.get(), aside.get());
        return ALA_N_NORMAL;
    }

private:
    // Renames the log back unless another process is working on it.  A process that renames a log keeps the
    // log locked until it has deleted the log or renamed it back.
    void restoreIfUnused(const char *path, const char *aside) {
        OS_fileIdentity named = {};
        if (OS_IdentifyName(aside, &named) != 0 || !named.regular)
            return; // another process has just deleted or restored the log, or the file is not regular
        const Descriptor file(SYSU_Open(aside, 0));
        const int locked = file.isOpen() ? OS_LockFile(file.get()) : OS_REFUSED;
        if (locked == OS_REFUSED && errno != ENOENT)
            return reportLeftAside(path, aside, std::strerror(errno), watch_);
        OS_fileIdentity held = {};
        if (locked != OS_DONE || OS_IdentifyDescriptor(file.get(), &held) != 0 ||
            OS_IdentifyName(aside, &named) != 0 || !OS_IsSameFile(held, named))
            return; // another process is working on the log
        if (renameBack(path, aside, watch_))
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                            "%s has its name again; a run that ended early had renamed it", path);
    }

    DeletionWatch &watch_;
};

} // namespace

void qvledger::restoreLogs(ALA_handle_t handle, DeletionWatch &watch) {
    const Malloced<char> prefix(_ALA_AddChar(handle->svrName, "."));
    LogsAside logs(watch);
    if (prefix != nullptr)
        visitDirectory(handle->acctLogPath, prefix.get(), logs);
}
