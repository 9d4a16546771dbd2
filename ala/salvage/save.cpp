// Saves the intact records of a log to a new file.
#include <algorithm>
#include <cerrno>
#include <new>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/salvage/checked_log.h"
#include "service/new_file.h"

using namespace qvledger;

static CheckOutcome copyRange(LogBytes &source, std::int64_t begin, std::int64_t end, NewFile &file) {
    constexpr std::int64_t kPiece = 256 * 1024;
    for (std::int64_t at = begin; at < end;) {
        const auto size = static_cast<std::size_t>(std::min(kPiece, end - at));
        const std::uint8_t *bytes = source.at(at, size);
        if (bytes == nullptr)
            return CheckOutcome::CannotRead;
        if (!file.write(bytes, size))
            return CheckOutcome::CannotWrite;
        at += static_cast<std::int64_t>(size);
    }
    return CheckOutcome::Done;
}

static CheckResult failure(CheckOutcome outcome, int error, const char *path) {
    switch (outcome) {
    case CheckOutcome::Exists:
        return {outcome, ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s exists already", path), error};
    case CheckOutcome::CannotRead:
        return {outcome,
                ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "%s cannot be written: the log cannot be read", path),
                error};
    case CheckOutcome::NotSynced:
        return {outcome, ALA_FAIL(ALA_A_UNKNOWN_ERR, "the folder of %s cannot be synced", path), error};
    default:
        return {outcome, ALA_FAIL(ALA_A_SYSTEM_ERR, "%s cannot be written", path), error};
    }
}

// Copies the header and all intact records.  Reads the copied bytes through a second LogBytes, so that
// copying does not move the search's windows.
static CheckResult copyRecords(CheckedLog &log, NewFile &file, const char *path, CheckWatch &watch) {
    LogBytes bytes(log.log.fd, log.size);
    LogBytes source(log.log.fd, log.size);
    Resync search(bytes, log.log.verNum, log.headerEnd, watch);
    std::int64_t begin = 0; // start of the range to copy next
    std::int64_t end = log.headerEnd;
    const auto copy = [&]() -> CheckResult {
        const CheckOutcome outcome = copyRange(source, begin, end, file);
        if (outcome == CheckOutcome::Done)
            return {};
        return failure(outcome, outcome == CheckOutcome::CannotRead ? source.error() : errno, path);
    };
    while (const FoundRecord *found = search.next()) {
        if (found->begin != end) {
            if (const CheckResult result = copy(); result.outcome != CheckOutcome::Done)
                return result;
            watch.stray(end, found->begin, foundNext(*found));
            begin = found->begin;
        }
        end = found->run.end;
    }
    if (bytes.failed())
        return failure(CheckOutcome::CannotRead, bytes.error(), path);
    if (search.gaveUp())
        return {CheckOutcome::GaveUp, ALA_N_NORMAL, 0};
    const CheckResult result = copy();
    if (result.outcome == CheckOutcome::Done && end < log.size)
        watch.stray(end, log.size, FoundNext::None);
    return result;
}

CheckResult qvledger::saveLog(CheckedLog &log, const char *path, CheckWatch &watch) {
    const FuncTrace trace("saveLog");
    try {
        OS_fileIdentity taken = {};
        if (OS_IdentifyName(path, &taken) == 0)
            return failure(CheckOutcome::Exists, EEXIST, path);
        NewFile file(path);
        if (!file.isOpen()) {
            const int error = errno;
            return {CheckOutcome::CannotWrite,
                    ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s cannot be created", path), error};
        }
        if (const CheckResult result = copyRecords(log, file, path, watch);
            result.outcome != CheckOutcome::Done)
            return result;
        OS_GiveAttributes(log.log.fd, file.descriptor());
        if (!file.nameNew())
            return failure(errno == EEXIST ? CheckOutcome::Exists : CheckOutcome::CannotWrite, errno, path);
        if (OS_SyncFolderOf(file.descriptor()) != 0)
            return failure(CheckOutcome::NotSynced, errno, path);
        return {};
    } catch (const std::bad_alloc &) {
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to save %s", path), 0};
    }
}
