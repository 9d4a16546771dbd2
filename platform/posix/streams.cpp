// Streams, and what keeps written files on their disk.
#include "platform/os.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

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

int OS_HoldAgainstWriters(int in_fd) {
    if (fcntl(in_fd, F_SETLEASE, F_RDLCK) == 0)
        return 0;
    return errno == EAGAIN ? 1 : -1;
}

void OS_PrepareProcess() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGIO, SIG_IGN);
    // What stands in for a closed stream refuses its use, as a closed one does.
    while (true) {
        const int fd = open("/dev/null", O_RDONLY);
        if (fd == -1 || fd > STDERR_FILENO) {
            if (fd != -1)
                static_cast<void>(close(fd));
            return;
        }
    }
}
