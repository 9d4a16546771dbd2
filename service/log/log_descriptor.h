// What lies beneath the log's sink: a file that was opened for it, or the standard error stream.
#pragma once

#include <string_view>

#include "platform/os.h"

namespace qvledger {

// Threads share an open one.  It needs no destructor, as its sink needs none.
class LogDescriptor {
public:
    // A file to append entries to, made if there is none, which takes no standard stream's place; false, with
    // errno, on failure.  It never waits for a pipe's reader.
    bool openFile(const char *name);
    // The standard error stream, which others share, so it stays as it is.  While all is to be complete its
    // reader is waited for.
    void openStandardError(bool isComplete);
    void close();

    // A program that closes descriptors which are not its own may have another file under the number by now.
    bool isStillOpen() const;
    // A pipe or a socket, whose reader may take nothing?
    bool mayFill() const { return canFill; }

    // Takes off the bytes what was written, all if it does not go to a reader that may take nothing; false
    // with errno when nothing was: EAGAIN or EINTR when it may be taken a moment later.
    bool passPiece(std::string_view &bytes) const;
    // After bytes were not written that are waited for: whether to go on.
    bool waitForRoom() const;

private:
    void look();

    int fd = -1;
    OS_fileIdentity opened = {}; // not of the standard error stream
    bool isSocket = false;
    bool canFill = false;
};

} // namespace qvledger
