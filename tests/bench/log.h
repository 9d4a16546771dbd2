// log.h: reading an accounting log through a large buffer, for floor.cpp.
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
    explicit Input(const char *path, size_t size = chunk) : fd(open(path, O_RDONLY)), buf(size) {
        if (fd < 0)
            fail("cannot open the log");
    }
    bool atEnd() { return pos == end && !fill(1); }
    // The next n bytes; they stay until the next call.
    const char *take(size_t n) {
        if (end - pos < n && !fill(n))
            fail("the log ends early");
        pos += n;
        return buf.data() + pos - n;
    }
    void skipBuffered() { pos = end; }

private:
    bool fill(size_t n) {
        if (n > largest)
            fail("a length is too large");
        memmove(buf.data(), buf.data() + pos, end - pos);
        end -= pos, pos = 0;
        if (n > buf.size())
            buf.resize(n);
        while (end < n) {
            ssize_t got = read(fd, buf.data() + end, buf.size() - end);
            if (got < 0)
                fail("cannot read the log");
            if (got == 0)
                return false;
            end += got;
        }
        return true;
    }
    int fd;
    std::vector<char> buf;
    size_t pos = 0, end = 0;
};
