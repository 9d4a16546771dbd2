// An open file, closed when its owner goes.
#pragma once

#include <utility>

#include "platform/os.h"

namespace qvledger {

// By a function; -1 for none.
template <void (*Close)(int)>
class OwnedDescriptor {
public:
    explicit OwnedDescriptor(int givenFd = -1) : fd(givenFd) {}
    ~OwnedDescriptor() { reset(-1); }
    OwnedDescriptor(const OwnedDescriptor &) = delete;
    OwnedDescriptor &operator=(const OwnedDescriptor &) = delete;

    bool isOpen() const { return fd != -1; }
    int get() const { return fd; }
    int release() { return std::exchange(fd, -1); }
    void reset(int givenFd) {
        if (fd != -1)
            Close(fd);
        fd = givenFd;
    }

private:
    int fd;
};

inline void closeRead(int fd) {
    static_cast<void>(_close(fd)); // only read from: nothing can be lost
}
using Descriptor = OwnedDescriptor<closeRead>;

} // namespace qvledger
