// An open file, closed when its owner goes.
#pragma once

#include <utility>

#include "platform/os.h"

namespace qvledger {

// -1 for none.
class Descriptor {
public:
    explicit Descriptor(int givenFd = -1) : fd(givenFd) {}
    ~Descriptor() { reset(-1); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    bool isOpen() const { return fd != -1; }
    int get() const { return fd; }
    int release() { return std::exchange(fd, -1); }
    void reset(int givenFd) {
        if (fd != -1)
            static_cast<void>(_close(fd)); // only read from: nothing can be lost
        fd = givenFd;
    }

private:
    int fd;
};

} // namespace qvledger
