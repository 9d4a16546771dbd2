// Files, with read-ahead beneath the reader.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/os.h"

constexpr std::size_t kBlockSize = 128 * 1024;
constexpr int kDescriptors = 1024; // descriptors from here on are read without read-ahead

namespace {

// The kernel's position is left() bytes behind the caller's.
struct ReadAhead : OS_readAhead {
    unsigned char *block; // kBlockSize bytes, or null until the first read and after _close

    std::size_t left() const { return static_cast<std::size_t>(end - next); }
    void fill(std::size_t in_size) {
        next = block;
        end = block + in_size;
    }
    std::size_t take(unsigned char *outp_bytes, std::size_t in_size) {
        const std::size_t taken = std::min(in_size, left());
        if (taken != 0)
            std::memcpy(outp_bytes, next, taken);
        next += taken;
        return taken;
    }
};

} // namespace

// Indexed by descriptor.  A descriptor belongs to one thread at a time, so its row needs no lock.
static ReadAhead gReadAhead[kDescriptors];

static ReadAhead *readAheadOf(int in_fd) {
    if (in_fd < 0 || in_fd >= kDescriptors)
        return nullptr;
    // Shows what the thread that closed the number's last file left behind (_close).
    static_cast<void>(std::atomic_ref(gReadAhead[in_fd].block).load(std::memory_order_acquire));
    return &gReadAhead[in_fd];
}

static ssize_t readOnce(int in_fd, void *outp_bytes, std::size_t in_size) {
    ssize_t got;
    do
        got = read(in_fd, outp_bytes, in_size);
    while (got < 0 && errno == EINTR);
    return got;
}

// Whether the descriptor's read-ahead, which is used up, can be filled in one block.
static bool canReadAhead(ReadAhead *inout_ahead) {
    if (inout_ahead == nullptr)
        return false;
    if (inout_ahead->block == nullptr)
        inout_ahead->block = static_cast<unsigned char *>(std::malloc(kBlockSize));
    inout_ahead->fill(0);
    return inout_ahead->block != nullptr;
}

// One read towards in_size bytes: through the block, or straight to the caller when that is as large.
static ssize_t readSome(int in_fd, ReadAhead *inout_ahead, unsigned char *outp_bytes, std::size_t in_size) {
    if (in_size >= kBlockSize || !canReadAhead(inout_ahead))
        return readOnce(in_fd, outp_bytes, in_size);
    const ssize_t got = readOnce(in_fd, inout_ahead->block, kBlockSize);
    if (got <= 0)
        return got;
    inout_ahead->fill(static_cast<std::size_t>(got));
    return static_cast<ssize_t>(inout_ahead->take(outp_bytes, in_size));
}

// A failed read has read nothing: the position goes back before the bytes that came first.  What cannot seek
// has lost them.
static int failRead(int in_fd, std::size_t in_done) {
    const int error = errno;
    if (in_done != 0)
        static_cast<void>(lseek(in_fd, -static_cast<off_t>(in_done), SEEK_CUR));
    errno = error;
    return -1;
}

static int readFully(int in_fd, ReadAhead *inout_ahead, unsigned char *outp_bytes, std::size_t in_size) {
    std::size_t done = inout_ahead != nullptr ? inout_ahead->take(outp_bytes, in_size) : 0;
    while (done < in_size) {
        const ssize_t got = readSome(in_fd, inout_ahead, outp_bytes + done, in_size - done);
        if (got < 0)
            return failRead(in_fd, done);
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

long _lseek(int in_fd, long in_offset, int in_origin) {
    ReadAhead *ahead = readAheadOf(in_fd);
    long offset = in_offset;
    if (ahead != nullptr && in_origin == SEEK_CUR &&
        __builtin_sub_overflow(in_offset, static_cast<long>(ahead->left()), &offset)) {
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

int _stat(const char *inp_path, struct _stat *outp_stat) {
    struct stat status;
    if (stat(inp_path, &status) != 0)
        return -1;
    *outp_stat = {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec};
    return 0;
}

int _unlink(const char *inp_path) {
    return unlink(inp_path);
}

int _write(int in_fd, const void *inp_bytes, unsigned in_size) {
    return static_cast<int>(write(in_fd, inp_bytes, std::min(in_size, unsigned{INT_MAX})));
}

int _dup(int in_fd) {
    return fcntl(in_fd, F_DUPFD_CLOEXEC, 0L);
}

} // extern "C"
