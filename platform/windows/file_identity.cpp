#include "platform/os.h"

#include <cerrno>

#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// File times count units of 100 nanoseconds since 1601.
constexpr std::uint64_t kStep = 100;
constexpr std::int64_t kStepsPerSecond = 10'000'000;
constexpr std::int64_t kStepsTo1970 = 116'444'736'000'000'000;
// How long to wait until file times have certainly advanced: twice the longest step.  Some file systems store
// times in steps of two seconds.
constexpr std::int64_t kCoarse = 2'000'000'000;
constexpr std::int64_t kCoarseStep = 2 * kCoarse;
constexpr std::int64_t kFineStep = 40'000'000; // for times from the system's clock
constexpr int kLooks = 3;                      // attempts for a file that keeps changing

static std::int64_t nanoseconds(std::int64_t steps) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(steps - kStepsTo1970) * kStep);
}

static std::int64_t together(DWORD high, DWORD low) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(high) << 32 | low);
}

// Is the handle that of a link itself, or of a folder that leads to another place?  Other reparse points are
// files that the file system stores in its own way, such as files on a deduplicated volume.
static bool isLink(HANDLE file) {
    FILE_ATTRIBUTE_TAG_INFO info = {};
    return GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof info) == 0 ||
           IsReparseTagNameSurrogate(info.ReparseTag);
}

int qvledger::identifyHandle(HANDLE file, OS_fileIdentity *identity) {
    BY_HANDLE_FILE_INFORMATION found = {};
    FILE_BASIC_INFO times = {};
    FILE_STANDARD_INFO standard = {};
    const DWORD type = file != INVALID_HANDLE_VALUE ? GetFileType(file) : DWORD{FILE_TYPE_UNKNOWN};
    if (type == FILE_TYPE_CHAR || type == FILE_TYPE_PIPE) {
        *identity = {0, 0, 0, 0, 0, 0, 1, false};
        return 0;
    }
    if (file == INVALID_HANDLE_VALUE) {
        errno = EBADF;
        return -1;
    }
    if (GetFileInformationByHandle(file, &found) == 0 ||
        GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times) == 0 ||
        GetFileInformationByHandleEx(file, FileStandardInfo, &standard, sizeof standard) == 0) {
        errno = EIO; // not from the system's error, because EBADF would mean that the file is not open
        return -1;
    }
    *identity = {found.dwVolumeSerialNumber,
                 static_cast<std::uint64_t>(together(found.nFileIndexHigh, found.nFileIndexLow)),
                 together(found.nFileSizeHigh, found.nFileSizeLow),
                 nanoseconds(times.LastWriteTime.QuadPart),
                 nanoseconds(times.ChangeTime.QuadPart),
                 (times.LastWriteTime.QuadPart - kStepsTo1970) / kStepsPerSecond,
                 standard.DeletePending != 0 ? 0U : found.nNumberOfLinks,
                 (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
                     ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || !isLink(file))};
    return 0;
}

static int identifyPath(const char *path, DWORD flags, OS_fileIdentity *identity) {
    const FileHandle file(openHandle(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, flags));
    return file.isOpen() ? identifyHandle(file.get(), identity) : -1;
}

int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity) {
    return identifyHandle(handleOf(fd), identity);
}

int OS_IdentifyName(const char *path, OS_fileIdentity *identity) {
    return identifyPath(path, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, identity);
}

int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity) {
    return identifyPath(path, FILE_FLAG_BACKUP_SEMANTICS, identity);
}

int OS_IdentifySettled(int fd, OS_fileIdentity *identity) {
    for (int look = 0; look < kLooks; ++look) {
        FILETIME now = {}; // read before the file's times, so that a later change gets a later time
        GetSystemTimeAsFileTime(&now);
        if (OS_IdentifyDescriptor(fd, identity) != 0)
            return -1;
        const bool isCoarse = identity->modified % kCoarse == 0;
        const std::int64_t step = isCoarse ? kCoarseStep : kFineStep;
        const std::int64_t age =
            nanoseconds(together(now.dwHighDateTime, now.dwLowDateTime)) - identity->modified;
        if (age > step || age < -step) // a time far in the future comes from another machine's clock
            return 0;
        OS_Sleep(static_cast<int>(step / 1'000'000));
    }
    return OS_IdentifyDescriptor(fd, identity);
}
