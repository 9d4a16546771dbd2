// The C library has no streams to functions: the bytes wait in a temporary file until they are handed on.
#include "platform/os.h"

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
    if (GetTempPathA(sizeof folder, folder) == 0 || GetTempFileNameA(folder, "qvl", 0, path) == 0) {
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
    if (std::fflush(inp_stream) != 0 || tap == nullptr)
        return EOF;
    const int fd = _fileno(inp_stream);
    char piece[32 * 1024];
    std::int64_t done = 0;
    for (int got = 0; (got = OS_ReadAt(fd, done, piece, sizeof piece)) != 0; done += got)
        if (got < 0 ||
            tap->writer(tap->context, piece, static_cast<std::size_t>(got)) != static_cast<std::size_t>(got))
            return EOF;
    std::rewind(inp_stream);
    return OS_CutFile(fd, 0) == 0 ? 0 : EOF;
}

int OS_CloseStream(std::FILE *inp_stream) {
    const int flushed = OS_FlushStream(inp_stream);
    Tap *const tap = findTap(inp_stream);
    const int closed = std::fclose(inp_stream);
    if (tap != nullptr)
        *tap = {};
    return flushed == 0 ? closed : flushed;
}
