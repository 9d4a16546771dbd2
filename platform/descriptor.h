// Owner of a descriptor; its destructor closes the descriptor.
#pragma once

#include <utility>

#include "platform/os.h"

namespace qvledger {

// Close: the function that closes the descriptor.  The value -1 means that no descriptor is owned.
template <void (*Close)(int)>
class OwnedDescriptor {
public:
    explicit OwnedDescriptor(int fd = -1) : fd_(fd) {}
    ~OwnedDescriptor() { reset(-1); }
    OwnedDescriptor(const OwnedDescriptor &) = delete;
    OwnedDescriptor &operator=(const OwnedDescriptor &) = delete;

    bool isOpen() const { return fd_ != -1; }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd) {
        if (fd_ != -1)
            Close(fd_);
        fd_ = fd;
    }

private:
    int fd_;
};

inline void closeRead(int fd) {
    static_cast<void>(_close(fd)); // nothing was written through fd, so a failure loses nothing
}
using Descriptor = OwnedDescriptor<closeRead>;

} // namespace qvledger
