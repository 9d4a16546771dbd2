// Reads an open log in large pieces.
//
// The reader asks for the parts of an item (a record, a header, an access list entry) one after the other.
// LogFile keeps these parts contiguous until the reader consumes the item.  If the item turns out to be
// incomplete, it can be read again from its first byte later.
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
    // The first item begins at the position.  Does not own the descriptor; reading moves its position.
    explicit LogFile(int fd, std::int64_t position = 0) : fd_(fd), offset_(position) {}

    // Returns the next bytes of the item, valid until the next need(), consume() or moveTo().  Null if the
    // file has fewer bytes left, a read failed, or memory ran out; see error() and outOfMemory().
    const std::uint8_t *need(std::size_t size) {
        if (size > filled_ - reached_ && !fill(size)) [[unlikely]]
            return nullptr;
        return block_.get() + std::exchange(reached_, reached_ + size);
    }
    // Reads the next word of the item.  needNetWord() converts the word from network byte order;
    // needNativeWord() does not.  If need() fails, both set the word to 0 and return false.
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

    // The part of the item that need() has returned so far.
    const std::uint8_t *item() const { return block_.get() + begin_; }
    std::size_t itemSize() const { return reached_ - begin_; }
    // The item's offset in the file.
    std::int64_t position() const { return offset_ + static_cast<std::int64_t>(begin_); }

    // Ends the item; the next item begins after it.  Releases a block that was enlarged for this item.
    void consume() {
        begin_ = reached_;
        if (room_ > kPiece) [[unlikely]]
            moveTo(position());
    }
    // Starts the next item at the position.  Drops all bytes read so far, so that the file is read again.
    void moveTo(std::int64_t position) { *this = LogFile(fd_, position); }

    // The reason why need() failed: outOfMemory() is true if memory ran out, error() is the errno of a failed
    // read, else 0.  In all other cases the file ended; isAtEnd() is true if it ended before the item's first
    // byte.
    bool outOfMemory() const { return isOutOfMemory_; }
    int error() const { return error_; }
    bool isAtEnd() const { return isEnd_ && begin_ == filled_; }
    // The file offset up to which the item has been read.
    std::int64_t reach() const { return offset_ + static_cast<std::int64_t>(isEnd_ ? filled_ : reached_); }

private:
    // Bytes of one read.  Fewer than 128 KiB, because the C library may map and unmap larger blocks for each
    // log.
    static constexpr std::size_t kPiece = 120 * 1024;

    bool fill(std::size_t size);
    bool makeRoom();

    int fd_ = -1;
    std::int64_t offset_ = 0; // offset of the block in the file
    Malloced<std::uint8_t> block_;
    std::size_t room_ = 0;
    std::size_t begin_ = 0;   // start of the item in the block
    std::size_t reached_ = 0; // end of the bytes that need() has returned
    std::size_t filled_ = 0;  // end of the bytes read from the file
    int error_ = 0;
    bool isEnd_ = false;
    bool isOutOfMemory_ = false;
};

} // namespace qvledger
