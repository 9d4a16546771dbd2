#include "tool/report/line_writer.h"

#include <algorithm>
#include <cerrno>

#include "service/log/log.h"

using namespace qvledger;

constexpr std::size_t kUsualRoom = 256 * 1024; // bytes of the buffer; it grows for a longer line

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

// Writes the whole lines of the full buffer.  If a single line does not fit, grows the buffer: a line that is
// written in pieces could be interrupted by another program's output.
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

// Writes the whole lines in the buffer or, if `all` is true, the whole buffer.
bool LineWriter::writeLines(bool all) {
    if (failed_ || waiting_ == 0)
        return !failed_;
    // A very long line takes time, so react to a signal even within the line.
    if (waiting_ > kUsualRoom && OS_NotedSignal() != 0)
        return fail(EINTR);
    const std::string_view lines(lines_.get(), waiting_);
    const std::size_t size = all ? waiting_ : lines.rfind('\n') + 1; // without a line end, npos + 1 is 0
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

// Prepares the first write: if the file ends with an incomplete line of another run or program, ends that
// line.
bool LineWriter::beginLine() {
    if (hasBegun_)
        return true;
    hasBegun_ = true;
    return file_.endedWithLineEnd() || write("\n");
}

// Writes a message between lines.  After a failure, discards the message, even the one about that failure.
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
        static_cast<void>(fail(error)); // the system may not report the same lost data again
    return why;
}

void LineWriter::close() {
    setMessageSink(nullptr);
    if (const int error = file_.close(); error != 0)
        static_cast<void>(fail(error));
}

// Discards the buffer, removes an incomplete line from the file, and reports the failure if it is the first.
// Always returns false, so that the calling function can return the result.
bool LineWriter::fail(int error) {
    file_.cutBack();
    waiting_ = 0;
    if (failed_)
        return false;
    failed_ = true;
    // The user has closed the pipe or sent the signal, and needs no message.
    const bool isKnown = error == EPIPE || error == EINTR;
    const char *reason = std::strerror(error);
    if (!isKnown && !file_.isStandardOutput())
        DisplayMsg(kMsgReportLost, file_.name(), reason);
    else if (!isKnown)
        DisplayMsg(kMsgOutputLost, reason);
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report could not be written: %s: %s", file_.name(),
                    reason);
    return false;
}
