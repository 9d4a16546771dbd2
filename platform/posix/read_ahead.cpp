#include "platform/os.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

constexpr std::size_t kBlockSize = 128 * 1024;
constexpr int kDescriptors = 1024; // descriptors from here on are read without read-ahead

namespace {

// The kernel's position is left() bytes behind the caller's.
struct ReadAhead : OS_readAhead {
    unsigned char *block; // kBlockSize bytes, or null until the first read and after _close

    std::size_t left() const { return static_cast<std::size_t>(end - next); }
    void fill(std::size_t size) {
        next = block;
        end = block + size;
    }
    std::size_t take(unsigned char *bytes, std::size_t size) {
        const std::size_t taken = std::min(size, left());
        if (taken != 0)
            std::memcpy(bytes, next, taken);
        next += taken;
        return taken;
    }
};

} // namespace

// Indexed by descriptor.  A descriptor belongs to one thread at a time, so its row needs no lock.
static ReadAhead gReadAhead[kDescriptors];

static ReadAhead *readAheadOf(int fd) {
    if (fd < 0 || fd >= kDescriptors)
        return nullptr;
    // Shows what the thread that closed the number's last file left behind (_close).
    static_cast<void>(std::atomic_ref(gReadAhead[fd].block).load(std::memory_order_acquire));
    return &gReadAhead[fd];
}

static ssize_t readOnce(int fd, void *bytes, std::size_t size) {
    ssize_t got;
    do
        got = read(fd, bytes, size);
    while (got < 0 && errno == EINTR);
    return got;
}

// Whether the descriptor's read-ahead, which is used up, can be filled in one block.
static bool canReadAhead(ReadAhead *ahead) {
    if (ahead == nullptr)
        return false;
    if (ahead->block == nullptr)
        ahead->block = static_cast<unsigned char *>(std::malloc(kBlockSize));
    ahead->fill(0);
    return ahead->block != nullptr;
}

// One read towards in_size bytes: through the block, or straight to the caller when that is as large.
static ssize_t readSome(int fd, ReadAhead *ahead, unsigned char *bytes, std::size_t size) {
    if (size >= kBlockSize || !canReadAhead(ahead))
        return readOnce(fd, bytes, size);
    const ssize_t got = readOnce(fd, ahead->block, kBlockSize);
    if (got <= 0)
        return got;
    ahead->fill(static_cast<std::size_t>(got));
    return static_cast<ssize_t>(ahead->take(bytes, size));
}

// A failed read has read nothing: the position goes back before the bytes that came first.  What cannot seek
// has lost them.
static int failRead(int fd, std::size_t done) {
    const int error = errno;
    if (done != 0)
        static_cast<void>(lseek(fd, -static_cast<off_t>(done), SEEK_CUR));
    errno = error;
    return -1;
}

static int readFully(int fd, ReadAhead *ahead, unsigned char *bytes, std::size_t size) {
    std::size_t done = ahead != nullptr ? ahead->take(bytes, size) : 0;
    while (done < size) {
        const ssize_t got = readSome(fd, ahead, bytes + done, size - done);
        if (got < 0)
            return failRead(fd, done);
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<int>(done);
}

extern "C" {

OS_readAhead *OS_ReadAheadOf(int in_fd) {
    return readAheadOf(in_fd);
}

int _read(int in_fd, void *outp_buffer, unsigned in_size) {
    ReadAhead *ahead = readAheadOf(in_fd);
    if (ahead != nullptr && in_size != 0 && in_size <= ahead->left()) {
        std::memcpy(outp_buffer, ahead->next, in_size);
        ahead->next += in_size;
        return static_cast<int>(in_size);
    }
    if (in_size > INT_MAX) {
        errno = EINVAL;
        return -1;
    }
    return readFully(in_fd, ahead, static_cast<unsigned char *>(outp_buffer), in_size);
}

std::int64_t _lseeki64(int in_fd, std::int64_t in_offset, int in_origin) {
    ReadAhead *ahead = readAheadOf(in_fd);
    std::int64_t offset = in_offset;
    if (ahead != nullptr && in_origin == SEEK_CUR &&
        __builtin_sub_overflow(in_offset, static_cast<std::int64_t>(ahead->left()), &offset)) {
        errno = EINVAL;
        return -1;
    }
    const off_t position = lseek(in_fd, offset, in_origin);
    if (position >= 0 && ahead != nullptr)
        ahead->fill(0);
    return position;
}

int _close(int in_fd) {
    // The row is given up first: once closed, the number may be another thread's new file.
    if (ReadAhead *ahead = readAheadOf(in_fd)) {
        std::free(ahead->block);
        ahead->next = ahead->end = nullptr;
        std::atomic_ref(ahead->block).store(nullptr, std::memory_order_release);
    }
    return close(in_fd);
}

} // extern "C"
