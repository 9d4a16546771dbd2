// The intact records of a log in a new one.
#include <algorithm>
#include <cerrno>
#include <new>
#include <string>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/repair/checked_log.h"

using namespace qvledger;

namespace {

// A file that has its name once it is whole, and is gone otherwise.
class NewFile {
public:
    explicit NewFile(const char *givenPath) : path(givenPath) {
        // Not made from the log's own name, which may be as long as a name can be.
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        const std::string firstPath = folder + ".being-saved." + std::to_string(_getpid());
        partPath = firstPath;
        file.reset(OS_MakeFile(partPath.c_str()));
        // Killed runs whose number this one has been given may have left theirs.
        for (int left = 1; left <= kMostLeft && !file.isOpen() && errno == EEXIST; ++left) {
            partPath = firstPath + "." + std::to_string(left);
            file.reset(OS_MakeFile(partPath.c_str()));
        }
    }
    ~NewFile() {
        const int error = errno;
        if (file.isOpen() && !named)
            static_cast<void>(_unlink(partPath.c_str()));
        errno = error;
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    bool isOpen() const { return file.isOpen(); }
    int descriptor() const { return file.get(); }

    bool write(const std::uint8_t *bytes, std::size_t size) {
        for (std::size_t done = 0; done < size;) {
            const int put = _write(file.get(), bytes + done, static_cast<unsigned>(size - done));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0)
                return false;
            done += static_cast<std::size_t>(put);
        }
        return true;
    }

    // Onto the disk, and under its name, unless that is taken.
    bool finish() {
        int synced = 0;
        do
            synced = _commit(file.get());
        while (synced != 0 && errno == EINTR);
        if (synced != 0)
            return false;
        const int moved = OS_NameNewFile(partPath.c_str(), path.c_str());
        if (moved == OS_TAKEN)
            errno = EEXIST;
        named = moved == OS_DONE;
        return named;
    }

private:
    static constexpr int kMostLeft = 1000;

    std::string path, partPath;
    Descriptor file;
    bool named = false;
};

} // namespace

static bool copyRange(LogBytes &givenBytes, std::int64_t begin, std::int64_t end, NewFile &file) {
    constexpr std::int64_t kPiece = 256 * 1024;
    for (std::int64_t at = begin; at < end;) {
        const auto size = static_cast<std::size_t>(std::min(kPiece, end - at));
        const std::uint8_t *bytes = givenBytes.at(at, size);
        if (bytes == nullptr || !file.write(bytes, size))
            return false;
        at += static_cast<std::int64_t>(size);
    }
    return true;
}

// A second view of the log, so that copying does not move what the search reads.
static ALA_retCode_t copyRecords(ALA__checkedLog &log, NewFile &file, ALA__checkWatch &watch) {
    LogBytes bytes(log.log.fd, log.size);
    LogBytes source(log.log.fd, log.size);
    WatchedSearch searchWatch(watch);
    RecordSearch search(bytes, log.log.verNum, log.headerEnd, searchWatch);
    std::int64_t begin = 0; // of what was not copied yet
    std::int64_t behind = log.headerEnd;
    const auto copy = [&] { return copyRange(source, begin, behind, file); };
    while (const FoundRecord *found = search.next()) {
        if (found->begin != behind) {
            if (!copy())
                return ALA_A_SYSTEM_ERR;
            watch.stray(behind, found->begin);
            begin = found->begin;
        }
        behind = found->end;
    }
    if (bytes.failed())
        return ALA_A_FAIL_READ_LOG_FILE;
    if (search.gaveUp())
        return ALA_A_LAST_ATTRIBUTE;
    if (!copy())
        return source.failed() ? ALA_A_FAIL_READ_LOG_FILE : ALA_A_SYSTEM_ERR;
    if (behind < log.size)
        watch.stray(behind, log.size);
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__SaveLog(ALA__checkedLog *inoutp_log, const char *inp_path, ALA__checkWatch &inout_watch) {
    const FuncTrace trace("ALA__SaveLog");
    try {
        OS_fileIdentity taken = {};
        if (OS_IdentifyName(inp_path, &taken) == 0) {
            errno = EEXIST;
            return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s exists already", inp_path);
        }
        NewFile file(inp_path);
        if (!file.isOpen())
            return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s cannot be made", inp_path);
        if (const ALA_retCode_t result = copyRecords(*inoutp_log, file, inout_watch); result != ALA_N_NORMAL)
            return ALA_FAIL(result, "%s cannot be written", inp_path);
        OS_GiveAttributes(inoutp_log->log.fd, file.descriptor());
        if (!file.finish())
            return errno == EEXIST ? ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s exists already", inp_path)
                                   : ALA_FAIL(ALA_A_SYSTEM_ERR, "%s cannot be written", inp_path);
        return OS_SyncFolderOf(file.descriptor()) == 0
                   ? ALA_N_NORMAL
                   : ALA_FAIL(ALA_A_UNKNOWN_ERR, "the folder of %s cannot be synced", inp_path);
    } catch (const std::bad_alloc &) {
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to save %s", inp_path);
    }
}
