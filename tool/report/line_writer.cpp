#include "tool/report/line_writer.h"

#include <algorithm>
#include <cerrno>

#include "service/log/log.h"

using namespace qvledger;

constexpr std::size_t kUsualRoom = 256 * 1024; // for lines; a longer line makes more

bool LineWriter::begin() {
    if (!resize(lines_, kUsualRoom))
        return false;
    room_ = kUsualRoom;
    if (file_.wasRemoved())
        static_cast<void>(fail(ENOENT));
    if (file_.isMessagesFile())
        setMessageSink(this);
    return true;
}

void LineWriter::putLong(std::string_view text) {
    if (!failed_ && makeRoom(text.size()))
        put(text);
}

// Writes the whole lines when the buffer is full.  One line that does not fit makes the buffer grow, because
// it would otherwise be written in pieces, between which others could write.
bool LineWriter::makeRoom(std::size_t size) {
    if (!writeLines(false))
        return false;
    if (size <= room_ - waiting_)
        return true;
    const std::size_t room = std::max(2 * room_, waiting_ + size);
    if (!resize(lines_, room))
        return fail(ENOMEM);
    room_ = room;
    return true;
}

// The whole lines in the buffer, or everything.
bool LineWriter::writeLines(bool all) {
    if (failed_ || waiting_ == 0)
        return !failed_;
    // Inside a line that is longer than usual a request to end is not left waiting.
    if (waiting_ > kUsualRoom && OS_NotedSignal() != 0)
        return fail(EINTR);
    const std::string_view lines(lines_.get(), waiting_);
    const std::size_t size = all ? waiting_ : lines.rfind('\n') + 1; // none: npos + 1 is 0
    if (size != 0 && !(beginLine() && write(lines.substr(0, size))))
        return false;
    waiting_ -= size;
    std::memmove(lines_.get(), lines_.get() + size, waiting_);
    return true;
}

bool LineWriter::write(std::string_view bytes) {
    const int error = file_.write(bytes);
    return error == 0 || fail(error);
}

// What another run or program could not finish stays a line of its own.
bool LineWriter::beginLine() {
    if (hasBegun_)
        return true;
    hasBegun_ = true;
    return file_.endedInLine() || write("\n");
}

// A message that does not fit on the disk is cut back like a line, and nothing could report that.
void LineWriter::message(std::string_view text) {
    if (writeLines(false) && beginLine())
        static_cast<void>(write(text));
}

const char *LineWriter::whyNotSafe() {
    if (!flush())
        return "its lines have not all reached the report";
    int error = 0;
    const char *why = file_.whyNotSafe(&error);
    if (error != 0)
        static_cast<void>(fail(error)); // a later success would mean nothing
    return why;
}

void LineWriter::close() {
    setMessageSink(nullptr);
    if (const int error = file_.close(); error != 0)
        static_cast<void>(fail(error));
}

// False, for the caller to return.
bool LineWriter::fail(int error) {
    file_.cutBack();
    waiting_ = 0;
    if (failed_)
        return false;
    failed_ = true;
    const bool isKnown =
        error == EPIPE || error == EINTR; // to the reader that left, or the sender of the signal
    const char *reason = std::strerror(error);
    if (!isKnown && !file_.isStandardOutput())
        DisplayMsg(kMsgReportLost, file_.name(), reason);
    else if (!isKnown)
        DisplayMsg(kMsgOutputLost, reason);
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report could not be written: %s: %s", file_.name(),
                    reason);
    return false;
}
