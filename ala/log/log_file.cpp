#include "ala/log/log_file.h"

#include <algorithm>
#include <cerrno>

#include "platform/os.h"

using namespace qvledger;

bool LogFile::fill(std::size_t size) {
    error_ = 0;
    isEnd_ = isOutOfMemory_ = false;
    while (filled_ - reached_ < size) {
        if (filled_ == room_ && !makeRoom()) {
            isOutOfMemory_ = true;
            return false;
        }
        // Seek before each read, because a process that inherited the descriptor shares its position.
        const std::int64_t at = offset_ + static_cast<std::int64_t>(filled_);
        const int got =
            _lseeki64(fd_, at, SEEK_SET) == at
                ? _read(fd_, block_.get() + filled_, static_cast<unsigned>(std::min(kPiece, room_ - filled_)))
                : -1;
        if (got <= 0) {
            error_ = got < 0 ? errno : 0;
            isEnd_ = got == 0;
            return false;
        }
        filled_ += static_cast<std::size_t>(got);
    }
    return true;
}

// Makes room after the bytes read.  Moves the item to the start of the block or, if the item is already
// there, doubles the block.  Because the file must fill a block before it is doubled, a damaged length never
// allocates more than kPiece bytes or twice the file's size.
bool LogFile::makeRoom() {
    if (begin_ != 0) {
        std::memmove(block_.get(), block_.get() + begin_, filled_ - begin_);
        offset_ += static_cast<std::int64_t>(begin_);
        reached_ -= begin_;
        filled_ -= begin_;
        begin_ = 0;
        return true;
    }
    const std::size_t room = std::max(kPiece, 2 * room_);
    if (!resize(block_, room))
        return false;
    room_ = room;
    return true;
}
