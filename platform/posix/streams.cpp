// Streams, and what keeps written files on their disk.
#include "platform/os.h"

#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Stream {
    OS_writer writer;
    void *context;
};

} // namespace

int _fileno(std::FILE *inp_stream) {
    return fileno(inp_stream);
}

int _isatty(int in_fd) {
    return isatty(in_fd);
}

int _commit(int in_fd) {
    return fsync(in_fd);
}

int OS_SyncFolderOf(const char *inp_path) {
    char *folder = strdup(inp_path);
    if (folder == nullptr)
        return -1;
    char *slash = std::strrchr(folder, '/');
    if (slash != nullptr)
        slash[slash == folder ? 1 : 0] = '\0';
    const int fd = open(slash != nullptr ? folder : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::free(folder);
    if (fd == -1)
        return -1;
    const int result = fsync(fd);
    static_cast<void>(close(fd)); // only synced: nothing can be lost
    return result;
}

static ssize_t writeTo(void *givenStream, const char *bytes, std::size_t size) {
    const auto *stream = static_cast<const Stream *>(givenStream);
    return static_cast<ssize_t>(stream->writer(stream->context, bytes, size));
}

static int closeStream(void *stream) {
    std::free(stream);
    return 0;
}

std::FILE *OS_StreamTo(OS_writer in_writer, void *inp_context) {
    auto *stream = static_cast<Stream *>(std::malloc(sizeof(Stream)));
    if (stream == nullptr)
        return nullptr;
    *stream = {in_writer, inp_context};
    std::FILE *made = fopencookie(stream, "w", {nullptr, writeTo, nullptr, closeStream});
    if (made == nullptr)
        std::free(stream);
    return made;
}
