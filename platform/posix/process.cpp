#include "platform/os.h"

#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

void OS_PrepareProcess() {
    for (const int ignored : {SIGPIPE, SIGIO, SIGXFSZ})
        std::signal(ignored, SIG_IGN);
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
