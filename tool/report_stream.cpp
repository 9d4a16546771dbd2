#include "tool/report_stream.h"

#include <cerrno>
#include <cstring>

#include "platform/os.h"
#include "service/log.h"

// Outlives every stream: standard output is flushed once more when the program ends.
static char buffer[256 * 1024];

bool ReportStream::open(const char *inp_fileName) {
    fileName = inp_fileName;
    if (fileName == nullptr) {
        fl = stdout;
    } else {
        fl = std::fopen(fileName, "ax"); // only if there is no such file
        created = fl != nullptr;
        if (fl == nullptr && errno == EEXIST)
            fl = std::fopen(fileName, "a");
    }
    if (fl == nullptr)
        return false;
    if (fileName != nullptr || _isatty(_fileno(fl)) == 0)
        static_cast<void>(std::setvbuf(fl, buffer, _IOFBF, sizeof buffer)); // refused, it stays as it was
    return true;
}

static void logWriteFailure() {
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report could not be written: %s",
                    std::strerror(errno));
}

bool ReportStream::isSafe() {
    if (std::ferror(fl) != 0)
        return false; // the failure was logged when it was met, or is when the stream is closed
    if (std::fflush(fl) != 0) {
        logWriteFailure();
        return false;
    }
    if (fileName == nullptr)
        return true;
    if (_commit(_fileno(fl)) != 0) {
        logWriteFailure();
        return false;
    }
    if (created && !folderSynced) {
        folderSynced = OS_SyncFolderOf(fileName) == 0;
        if (!folderSynced)
            logWriteFailure();
        return folderSynced;
    }
    return true;
}

void ReportStream::close() {
    if (fl == nullptr)
        return;
    const bool failedBefore = std::ferror(fl) != 0;
    const bool flushed = std::fflush(fl) == 0;
    if (failedBefore || !flushed)
        logWriteFailure();
    if (fileName != nullptr)
        static_cast<void>(std::fclose(fl)); // its one failure left was told above
    fl = nullptr;
}

void ReportStream::removeIfCreated() {
    if (created && _unlink(fileName) == 0)
        created = false;
}
