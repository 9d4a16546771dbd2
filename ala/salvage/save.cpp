// Saves the intact records of a log to a new file.
#include <algorithm>
#include <cerrno>
#include <new>
#include <string>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/salvage/checked_log.h"

using namespace qvledger;

namespace {

// A new file.  finish() gives the complete file its name.  Unless finish() succeeds, the destructor removes
// the file.
class NewFile {
public:
    explicit NewFile(const char *path) : path_(path) {
        // Do not use the log's name, which may already have the maximum length.
        const std::string folder = path_.substr(0, path_.rfind('/') + 1);
        const std::string firstPath = folder + ".being-saved." + std::to_string(_getpid());
        partPath_ = firstPath;
        file_.reset(OS_MakeFile(partPath_.c_str()));
        // Killed processes with the same number may have left files with these names.
        for (int left = 1; left <= kMostLeft && !file_.isOpen() && errno == EEXIST; ++left) {
            partPath_ = firstPath + "." + std::to_string(left);
            file_.reset(OS_MakeFile(partPath_.c_str()));
        }
    }
    ~NewFile() {
        const int error = errno;
        if (file_.isOpen() && !named_)
            static_cast<void>(_unlink(partPath_.c_str()));
        errno = error;
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    bool isOpen() const { return file_.isOpen(); }
    int descriptor() const { return file_.get(); }

    bool write(const std::uint8_t *bytes, std::size_t size) {
        for (std::size_t done = 0; done < size;) {
            const int put = _write(file_.get(), bytes + done, static_cast<unsigned>(size - done));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0)
                return false;
            done += static_cast<std::size_t>(put);
        }
        return true;
    }

    // Syncs the file and gives it its final name.  Fails with EEXIST if that name is taken.
    bool finish() {
        int synced = 0;
        do
            synced = _commit(file_.get());
        while (synced != 0 && errno == EINTR);
        if (synced != 0)
            return false;
        const int moved = OS_NameNewFile(partPath_.c_str(), path_.c_str());
        if (moved == OS_TAKEN)
            errno = EEXIST;
        named_ = moved == OS_DONE;
        return named_;
    }

private:
    static constexpr int kMostLeft = 1000;

    std::string path_, partPath_;
    Descriptor file_;
    bool named_ = false;
};

} // namespace

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
        if (!file.finish())
            return failure(errno == EEXIST ? CheckOutcome::Exists : CheckOutcome::CannotWrite, errno, path);
        if (OS_SyncFolderOf(file.descriptor()) != 0)
            return failure(CheckOutcome::NotSynced, errno, path);
        return {};
    } catch (const std::bad_alloc &) {
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to save %s", path), 0};
    }
}
