// log.h: reads an accounting log through a large buffer, for floor.cpp.
#pragma once
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "platform/byte_order.h"

inline const size_t chunk = 256 << 10, largest = 64 << 20, tagSize = 152;
enum : uint32_t { String = 14, Time = 48 };

[[noreturn]] inline void fail(const char *what) {
    fprintf(stderr, "%s\n", what);
    exit(1);
}

inline uint32_t native(const char *p) {
    uint32_t v;
    memcpy(&v, p, 4);
    return v;
}
inline uint32_t net(const char *p) {
    return qvledger::fromNetworkOrder(native(p));
}

class Input {
public:
    explicit Input(const char *path, size_t size = chunk) : fd_(open(path, O_RDONLY)), buf_(size) {
        if (fd_ < 0)
            fail("cannot open the log");
    }
    bool atEnd() { return pos_ == end_ && !fill(1); }
    // Returns the next n bytes, which are valid until the next call.
    const char *take(size_t n) {
        if (end_ - pos_ < n && !fill(n))
            fail("the log ends early");
        pos_ += n;
        return buf_.data() + pos_ - n;
    }
    void skipBuffered() { pos_ = end_; }

private:
    bool fill(size_t n) {
        if (n > largest)
            fail("a length is too large");
        memmove(buf_.data(), buf_.data() + pos_, end_ - pos_);
        end_ -= pos_, pos_ = 0;
        if (n > buf_.size())
            buf_.resize(n);
        while (end_ < n) {
            ssize_t got = read(fd_, buf_.data() + end_, buf_.size() - end_);
            if (got < 0)
                fail("cannot read the log");
            if (got == 0)
                return false;
            end_ += got;
        }
        return true;
    }
    int fd_;
    std::vector<char> buf_;
    size_t pos_ = 0, end_ = 0;
};
