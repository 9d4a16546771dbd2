#include "platform/os.h"

#include <algorithm>
#include <cerrno>

#include "platform/descriptor.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

// File times count steps of 100 nanoseconds since 1601.
constexpr std::int64_t kStepsTo1970 = 116'444'736'000'000'000;
constexpr std::int64_t kStepsPerSecond = 10'000'000;

static std::int64_t nanoseconds(const LARGE_INTEGER &time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.QuadPart - kStepsTo1970) * 100);
}

// Is the handle that of a link itself?  Other reparse points are files that the file system stores in its own
// way, such as files on a deduplicated volume.
static bool isLink(HANDLE file) {
    FILE_ATTRIBUTE_TAG_INFO info = {};
    return GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof info) == 0 ||
           IsReparseTagNameSurrogate(info.ReparseTag);
}

int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity) {
    const HANDLE file = handleOf(fd);
    BY_HANDLE_FILE_INFORMATION found = {};
    FILE_BASIC_INFO times = {};
    FILE_STANDARD_INFO standard = {};
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    if (const DWORD type = GetFileType(file); type == FILE_TYPE_CHAR || type == FILE_TYPE_PIPE) {
        *identity = {};
        identity->names = 1;
        return 0;
    }
    if (GetFileInformationByHandle(file, &found) == 0 ||
        GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times) == 0 ||
        GetFileInformationByHandleEx(file, FileStandardInfo, &standard, sizeof standard) == 0) {
        errno = EIO; // not from the system's error, because EBADF would mean that the file is not open
        return -1;
    }
    const std::int64_t modified = nanoseconds(times.LastWriteTime);
    const bool isPlain = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || !isLink(file);
    *identity = {found.dwVolumeSerialNumber,
                 static_cast<std::uint64_t>(found.nFileIndexHigh) << 32 | found.nFileIndexLow,
                 standard.EndOfFile.QuadPart,
                 modified,
                 std::max(modified, nanoseconds(times.ChangeTime)), // some file systems lack this time
                 (times.LastWriteTime.QuadPart - kStepsTo1970) / kStepsPerSecond,
                 standard.DeletePending != 0 ? 0U : standard.NumberOfLinks,
                 standard.Directory == 0 && isPlain};
    return 0;
}

static int identifyPath(const char *path, DWORD flags, OS_fileIdentity *identity) {
    const Descriptor file(
        descriptorOf(openHandle(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, flags), _O_RDONLY));
    return file.isOpen() ? OS_IdentifyDescriptor(file.get(), identity) : -1;
}

int OS_IdentifyName(const char *path, OS_fileIdentity *identity) {
    return identifyPath(path, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, identity);
}

int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity) {
    return identifyPath(path, FILE_FLAG_BACKUP_SEMANTICS, identity);
}
