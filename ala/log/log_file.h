// Reading an open log in large pieces.
//
// The reader asks for the parts of an item (a record, a header, an access list entry) one after the other.
// The item stays in one piece, with all parts that were asked for, until it is complete and consumed.  So an
// item that turns out to be incomplete costs nothing: it is dropped, and read again from its first byte
// later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/byte_order.h"
#include "platform/malloced.h"

namespace qvledger {

inline std::uint32_t nativeWord(const std::uint8_t *at) {
    std::uint32_t word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
}

class LogFile {
public:
    LogFile() = default;
    // The first item begins at the position.  The descriptor stays the caller's; reading moves it.
    explicit LogFile(int fd, std::int64_t position = 0) : fd_(fd), offset_(position) {}

    // The next bytes of the item, good until the next call; null when there are not as many.
    const std::uint8_t *need(std::size_t size) {
        if (size > filled_ - reached_ && !fill(size)) [[unlikely]]
            return nullptr;
        return block_.get() + std::exchange(reached_, reached_ + size);
    }
    // The same as a word in network byte order, and in the machine's.
    bool needNetWord(std::uint32_t *word) {
        const bool isThere = needNativeWord(word);
        *word = fromNetworkOrder(*word);
        return isThere;
    }
    bool needNativeWord(std::uint32_t *word) {
        const std::uint8_t *at = need(sizeof *word);
        *word = at != nullptr ? nativeWord(at) : 0;
        return at != nullptr;
    }

    // The item, as far as it was asked for.
    const std::uint8_t *item() const { return block_.get() + begin_; }
    std::size_t itemSize() const { return reached_ - begin_; }
    // Where it begins in the file.
    std::int64_t position() const { return offset_ + static_cast<std::int64_t>(begin_); }

    // The next item begins where this one ends.  A block that was made larger for this one is released.
    void consume() {
        begin_ = reached_;
        if (room_ > kPiece) [[unlikely]]
            moveTo(position());
    }
    // The next item begins there.  Everything that was read is dropped, so that changes of the file show.
    void moveTo(std::int64_t position) { *this = LogFile(fd_, position); }

    // Why there were not as many bytes: memory ran out; the system's reason (errno); or, if neither, the file
    // ended, with or without some bytes of the item.
    bool outOfMemory() const { return isOutOfMemory_; }
    int error() const { return error_; }
    bool isAtEnd() const { return isEnd_ && begin_ == filled_; }
    // The position up to which the item could be read.
    std::int64_t reach() const { return offset_ + static_cast<std::int64_t>(isEnd_ ? filled_ : reached_); }

private:
    // Bytes of one read.  The C library may map a block of 128 KiB, or of more, again for each log.
    static constexpr std::size_t kPiece = 120 * 1024;

    bool fill(std::size_t size);
    bool makeRoom();

    int fd_ = -1;
    std::int64_t offset_ = 0; // of the block in the file
    Malloced<std::uint8_t> block_;
    std::size_t room_ = 0;
    std::size_t begin_ = 0;   // the item, in the block
    std::size_t reached_ = 0; // what was asked for
    std::size_t filled_ = 0;  // what was read
    int error_ = 0;
    bool isEnd_ = false;
    bool isOutOfMemory_ = false;
};

} // namespace qvledger
