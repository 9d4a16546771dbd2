#include "service/log/log_descriptor.h"

#include <cerrno>
#include <cstdlib>

#include "platform/malloced.h"

using namespace qvledger;

constexpr int kStandardError = 2; // its descriptor

bool LogDescriptor::openFile(const char *name) {
    char *made = nullptr;
    fd = OS_OpenToAppend(name, &made);
    std::free(made); // who made it is all the same
    if (fd < 0)
        return false;
    static_cast<void>(OS_IdentifyDescriptor(fd, &opened)); // one that was opened just now can be looked at
    return true;
}

// A pipe here cannot be asked whether it has room, so its reader is waited for.
void LogDescriptor::openStandardError(bool) {
    fd = kStandardError;
}

bool LogDescriptor::isStillOpen() const {
    OS_fileIdentity now = {};
    return fd == kStandardError || (OS_IdentifyDescriptor(fd, &now) == 0 && OS_IsSameFile(now, opened));
}

void LogDescriptor::close() {
    if (fd > kStandardError && isStillOpen())
        static_cast<void>(_close(fd)); // nobody is left to tell
    *this = {};
}

bool LogDescriptor::passPiece(std::string_view &bytes) const {
    const int written = _write(fd, bytes.data(), static_cast<unsigned>(bytes.size()));
    if (written > 0)
        bytes.remove_prefix(static_cast<std::size_t>(written));
    return written > 0;
}

bool LogDescriptor::waitForRoom() const {
    return false;
}
