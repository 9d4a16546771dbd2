// The C library has no streams to functions: the bytes wait in a temporary file until they are handed on.
#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "platform/windows/error.h"
#include "platform/windows/file_handle.h"

using namespace qvledger;

namespace {

struct Tap {
    std::FILE *stream;
    OS_writer writer;
    void *context;
};

} // namespace

constexpr std::size_t kMostTaps = 16;
static std::mutex tapLock;
static Tap taps[kMostTaps];

static Tap *findTap(const std::FILE *stream) {
    const std::lock_guard guard(tapLock);
    for (Tap &tap : taps)
        if (tap.stream == stream)
            return &tap;
    return nullptr;
}

// A file without a name that others see, which goes when it is closed.
static HANDLE openTemporary() {
    char folder[MAX_PATH + 1];
    char path[MAX_PATH + 1];
    const DWORD length = GetTempPathA(sizeof folder, folder);
    if (length == 0 || length > sizeof folder || GetTempFileNameA(folder, "qvl", 0, path) == 0) {
        setErrno(GetLastError());
        return INVALID_HANDLE_VALUE;
    }
    return openHandle(path, GENERIC_READ | GENERIC_WRITE | DELETE, CREATE_ALWAYS,
                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
}

std::FILE *OS_StreamTo(OS_writer in_writer, void *inp_context) {
    Tap *const tap = findTap(nullptr);
    const int fd = tap != nullptr ? descriptorOf(openTemporary(), _O_RDWR) : -1;
    std::FILE *stream = fd != -1 ? _fdopen(fd, "w+b") : nullptr;
    if (stream == nullptr && fd != -1)
        static_cast<void>(_close(fd)); // nothing was written
    if (stream != nullptr)
        *tap = {stream, in_writer, inp_context};
    return stream;
}

int OS_FlushStream(std::FILE *inp_stream) {
    const Tap *const tap = findTap(inp_stream);
    // A write that failed between two flushes is only in the stream's error, which stays: none of it is
    // whole.
    if (std::fflush(inp_stream) != 0 || std::ferror(inp_stream) != 0 || tap == nullptr) {
        if (errno == 0)
            errno = EIO;
        return EOF;
    }
    const int fd = _fileno(inp_stream);
    char piece[32 * 1024];
    // What lies behind the position is of an earlier flush, if the file could not be cut then.
    std::int64_t left = _lseeki64(fd, 0, SEEK_CUR);
    for (std::int64_t done = 0; left > 0;) {
        const auto wanted = static_cast<unsigned>(std::min<std::int64_t>(left, sizeof piece));
        const int got = OS_ReadAt(fd, done, piece, wanted);
        if (got <= 0 ||
            tap->writer(tap->context, piece, static_cast<std::size_t>(got)) != static_cast<std::size_t>(got))
            return EOF;
        done += got;
        left -= got;
    }
    std::rewind(inp_stream);
    static_cast<void>(OS_CutFile(fd, 0)); // for the disk's sake
    return 0;
}

int OS_CloseStream(std::FILE *inp_stream) {
    const int flushed = OS_FlushStream(inp_stream);
    Tap *const tap = findTap(inp_stream);
    const int closed = std::fclose(inp_stream);
    if (tap != nullptr)
        *tap = {};
    return flushed == 0 ? closed : flushed;
}
