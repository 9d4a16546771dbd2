#include "ala/log/read_ahead.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "platform/os.h"

using namespace qvledger;

constexpr std::size_t kBlockSize = 120 * 1024; // malloc may map one of 128 KiB afresh for each log
constexpr int kDescriptors = 1024;             // descriptors from here on are read without read-ahead

namespace {

// The file's own position is left() bytes behind the reader's.
struct Block : ReadAhead {
    unsigned char *block; // kBlockSize bytes, or null until the first read and once closed

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
static Block gReadAhead[kDescriptors];

static Block *blockOf(int fd) {
    if (fd < 0 || fd >= kDescriptors)
        return nullptr;
    // Shows what the thread that closed the number's last file left behind (closeLog).
    static_cast<void>(std::atomic_ref(gReadAhead[fd].block).load(std::memory_order_acquire));
    return &gReadAhead[fd];
}

static int readOnce(int fd, void *bytes, std::size_t size) {
    return _read(fd, bytes, static_cast<unsigned>(size));
}

// Whether the descriptor's read-ahead, which is used up, can be filled in one block.
static bool canReadAhead(Block *ahead) {
    if (ahead == nullptr)
        return false;
    if (ahead->block == nullptr)
        ahead->block = static_cast<unsigned char *>(std::malloc(kBlockSize));
    ahead->fill(0);
    return ahead->block != nullptr;
}

// One read towards so many bytes: through the block, or straight to the reader when they are as many.
static int readSome(int fd, Block *ahead, unsigned char *bytes, std::size_t size) {
    if (size >= kBlockSize || !canReadAhead(ahead))
        return readOnce(fd, bytes, size);
    const int got = readOnce(fd, ahead->block, kBlockSize);
    if (got <= 0)
        return got;
    ahead->fill(static_cast<std::size_t>(got));
    return static_cast<int>(ahead->take(bytes, size));
}

// A failed read has read nothing: the position goes back before the bytes that came first.  What cannot seek
// has lost them.
static int failRead(int fd, std::size_t done) {
    const int error = errno;
    if (done != 0)
        static_cast<void>(_lseeki64(fd, -static_cast<std::int64_t>(done), SEEK_CUR));
    errno = error;
    return -1;
}

ReadAhead *qvledger::readAheadOf(int fd) {
    return blockOf(fd);
}

int qvledger::readLog(int fd, void *bytes, std::size_t size) {
    if (size > INT_MAX) {
        errno = EINVAL;
        return -1;
    }
    Block *const ahead = blockOf(fd);
    auto *const to = static_cast<unsigned char *>(bytes);
    std::size_t done = ahead != nullptr ? ahead->take(to, size) : 0;
    while (done < size) {
        const int got = readSome(fd, ahead, to + done, size - done);
        if (got < 0)
            return failRead(fd, done);
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<int>(done);
}

std::int64_t qvledger::seekLog(int fd, std::int64_t givenOffset, int origin) {
    Block *const ahead = blockOf(fd);
    std::int64_t offset = givenOffset;
    if (ahead != nullptr && origin == SEEK_CUR &&
        __builtin_sub_overflow(givenOffset, static_cast<std::int64_t>(ahead->left()), &offset)) {
        errno = EINVAL;
        return -1;
    }
    const std::int64_t position = _lseeki64(fd, offset, origin);
    if (position >= 0 && ahead != nullptr)
        ahead->fill(0);
    return position;
}

void qvledger::closeLog(int fd) {
    // The row is given up first: once closed, the number may be another thread's new file.
    if (Block *const ahead = blockOf(fd)) {
        std::free(ahead->block);
        ahead->next = ahead->end = nullptr;
        std::atomic_ref(ahead->block).store(nullptr, std::memory_order_release);
    }
    static_cast<void>(_close(fd)); // only read from: nothing can be lost
}
