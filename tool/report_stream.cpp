#include "tool/report_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "service/log.h"
#include "tool/holding.h"

using namespace qvledger;

constexpr std::size_t kStreamSize = 32 * 1024;
constexpr std::size_t kUsualRoom = 256 * 1024; // for lines; a longer line makes more
constexpr int kPause = 10;                     // milliseconds

static char streamBuffer[kStreamSize]; // of the one report that a program writes

// ---- Opening ----

ReportStream::Opened ReportStream::open(const char *fileName) {
    fileName_ = fileName;
    fd_ = _fileno(stdout);
    const Opened opened = fileName != nullptr ? openFile() : lock();
    if (opened != Opened::Yes)
        return opened;
    isTerminal_ = _isatty(fd_) != 0;
    if (!resize(lines_, kUsualRoom))
        return Opened::No;
    room_ = kUsualRoom;
    stream_ = OS_StreamTo(takeBytes, this);
    if (stream_ == nullptr)
        return Opened::No;
    static_cast<void>( // refused, it has a buffer of its own
        std::setvbuf(stream_, streamBuffer, isTerminal() ? _IOLBF : _IOFBF, sizeof streamBuffer));
    OS_fileIdentity messages = {};
    if (isFile() && OS_IdentifyDescriptor(_fileno(stderr), &messages) == 0 &&
        OS_IsSameFile(messages, opened_))
        setMessageSink(this);
    return Opened::Yes;
}

// Another run may remove or replace the file between its opening and its locking.
ReportStream::Opened ReportStream::openFile() {
    for (;;) {
        char *made = nullptr;
        fd_ = OS_OpenToAppend(fileName_, &made);
        madePath_.reset(made);
        if (fd_ == -1) {
            LOG_CondMessage(LOG_DETAIL, __FILE__, __LINE__, "%s cannot be opened: %s", fileName_,
                            std::strerror(errno));
            return OS_NotedSignal() != 0 ? Opened::GivenUp : Opened::No;
        }
        const Opened opened = lock();
        if (opened != Opened::Yes || !isLocked_ || nameLeadsHere())
            return opened;
        again_.reset(-1);               // a name may stay taken until nobody has its file open
        static_cast<void>(_close(fd_)); // nothing was written
        fd_ = -1;
    }
}

ReportStream::Opened ReportStream::lock() {
    kind_ = OS_KindOfOutput(fd_);
    if (!isFile())
        return Opened::Yes; // what is closed fails at the first write
    if (OS_WriteAtEnd(fd_) != 0 || OS_IdentifyDescriptor(fd_, &opened_) != 0)
        return Opened::No;
    const char *name = fileName_ != nullptr ? fileName_ : kStandardOutput;
    again_.reset(OS_OpenAgain(fd_));
    // Standard output is shared with other programs, and so would be a lock on it.
    switch (holdFile(fileName_ == nullptr && again_.isOpen() ? again_.get() : fd_, name)) {
    case ALA__holdResult::Held:
        isLocked_ = true;
        break;
    case ALA__holdResult::NotKnown:
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                        "the report %s cannot be locked against other runs: %s", name, std::strerror(errno));
        break;
    case ALA__holdResult::GivenUp:
        return Opened::GivenUp;
    }
    // Another run may have written to it first, or removed it.
    const std::uint64_t names = opened_.names;
    if (OS_IdentifyDescriptor(fd_, &opened_) != 0)
        return Opened::No;
    if (fileName_ == nullptr && names != 0 && opened_.names == 0)
        static_cast<void>(fail(ENOENT));
    return Opened::Yes;
}

bool ReportStream::nameLeadsHere() const {
    OS_fileIdentity named = {};
    return OS_IdentifyTarget(fileName_, &named) == 0 && OS_IsSameFile(named, opened_);
}

// ---- Writing ----

std::size_t ReportStream::takeBytes(void *stream, const char *bytes, std::size_t size) {
    return static_cast<ReportStream *>(stream)->take(bytes, size);
}

std::size_t ReportStream::take(const char *bytes, std::size_t size) {
    if (failed_ || !makeRoom(size))
        return 0;
    std::memcpy(lines_.get() + waiting_, bytes, size);
    waiting_ += size;
    return !isTerminal() || writeLines(false) ? size : 0;
}

// Writes the whole lines when the buffer is full.  One line that does not fit makes the buffer grow, because
// it would otherwise be written in pieces, between which others could write.
bool ReportStream::makeRoom(std::size_t size) {
    if (size <= room_ - waiting_)
        return true;
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
bool ReportStream::writeLines(bool all) {
    // Inside a line that is longer than usual a request to end is not left waiting.
    if (!failed_ && waiting_ > kUsualRoom && OS_NotedSignal() != 0)
        return fail(EINTR);
    const std::size_t lineEnd = std::string_view(lines_.get(), waiting_).rfind('\n');
    const std::size_t size = all ? waiting_ : lineEnd + 1; // none: npos + 1 is 0
    if (failed_ || (size != 0 && !(beginLine() && write(lines_.get(), size))))
        return false;
    waiting_ -= size;
    std::memmove(lines_.get(), lines_.get() + size, waiting_);
    return true;
}

bool ReportStream::write(const char *bytes, std::size_t size) {
    int error = 0;
    std::size_t done = 0;
    while (done < size && error == 0) {
        const int got = _write(fd_, bytes + done, static_cast<unsigned>(size - done));
        const int reason = got < 0 ? errno : 0;
        done += static_cast<std::size_t>(std::max(got, 0));
        if (done < size && !isFile() && OS_NotedSignal() != 0)
            error = EINTR; // the reader takes nothing, and the program is asked to end
        else if (reason == EAGAIN)
            OS_Sleep(kPause); // a pipe that does not wait by itself
        else if (got <= 0 && reason != EINTR)
            error = got < 0 ? reason : EIO;
    }
    const std::size_t lineEnd = std::string_view(bytes, done).rfind('\n');
    written_ += static_cast<std::int64_t>(done);
    openLine_ = static_cast<std::int64_t>(done - (lineEnd + 1));
    return error == 0 || fail(error);
}

// What another run or program could not finish stays a line of its own.
bool ReportStream::beginLine() {
    if (hasBegun_)
        return true;
    hasBegun_ = true;
    // Where the last byte cannot be read, an empty line does less harm than two lines in one.
    return !isFile() || opened_.size == 0 || (again_.isOpen() && OS_LastByte(again_.get()) == '\n') ||
           write("\n", 1);
}

// A message that does not fit on the disk is cut back like a line, and nothing could report that.
void ReportStream::message(std::string_view text) {
    if ((failed_ || writeLines(false)) && beginLine())
        static_cast<void>(write(text.data(), text.size()));
}

bool ReportStream::flush() {
    const bool flushed = stream_ == nullptr || OS_FlushStream(stream_) == 0;
    if (!flushed && !failed_)
        return fail(errno); // what was written has not come here
    return !failed_ && writeLines(true);
}

// False, for the caller to return.
bool ReportStream::fail(int error) {
    cutBack();
    waiting_ = 0;
    if (failed_)
        return false;
    failed_ = true;
    const bool isKnown =
        error == EPIPE || error == EINTR; // to the reader that left, or the sender of the signal
    const char *reason = std::strerror(error);
    if (!isKnown && fileName_ != nullptr)
        DisplayMsg(kMsgReportLost, fileName_, reason);
    else if (!isKnown)
        DisplayMsg(kMsgOutputLost, reason);
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report could not be written: %s: %s",
                    fileName_ != nullptr ? fileName_ : kStandardOutput, reason);
    errno = error;
    return false;
}

// Takes back the part of a line that was written last, unless others have written since.
void ReportStream::cutBack() {
    if (!isLocked_ || openLine_ == 0)
        return;
    if (!isWhole() || OS_CutFile(fd_, opened_.size + written_ - openLine_) != 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report ends in a part of a line");
        return;
    }
    written_ -= openLine_;
    openLine_ = 0;
}

// ---- What becomes of it ----

// Has nobody else written to the file, or cut it, since it was locked?
bool ReportStream::isWhole() const {
    OS_fileIdentity present = {};
    return OS_IdentifyDescriptor(fd_, &present) == 0 && present.size == opened_.size + written_;
}

const char *ReportStream::whyNotSafe() {
    if (!flush())
        return "its lines have not all reached the report";
    switch (kind_) {
    case OS_outputKind::File:
        return isLocked_ ? whyNotOnDisk() : "its report cannot be locked against other runs";
    case OS_outputKind::BlockDevice:
        return whyNotOnDisk();
    case OS_outputKind::Pipe:
    case OS_outputKind::LocalSocket:
        return whyNotRead();
    case OS_outputKind::OtherSocket:
        return "its report goes over a network, which does not say what has arrived";
    case OS_outputKind::Device:
        return nullptr;
    case OS_outputKind::Unknown:
        break;
    }
    return "the system does not say where its report goes";
}

const char *ReportStream::whyNotOnDisk() {
    if (_commit(fd_) != 0) {
        static_cast<void>(fail(errno)); // a later success would mean nothing
        return "its lines have not all reached the disk";
    }
    if (isFile() && !isFolderSynced_ && !isSyncFailed_) {
        isFolderSynced_ = OS_SyncFolderOf(fd_) == 0;
        isSyncFailed_ = !isFolderSynced_;
    }
    return isSyncFailed_ ? "the name of its report has not reached the disk" : nullptr;
}

const char *ReportStream::whyNotRead() const {
    for (int pause = 1;; pause = std::min(2 * pause, kPause)) {
        switch (OS_WasRead(fd_)) {
        case OS_DONE:
            return nullptr;
        case OS_REFUSED:
            return "the reader of its report has not read all of it";
        default:
            break;
        }
        if (OS_NotedSignal() != 0)
            return "the run was asked to end before its report was read";
        OS_Sleep(pause);
    }
}

const char *ReportStream::whyNotInPlace() const {
    OS_fileIdentity present = {};
    if (!isFile())
        return nullptr;
    if (!isWhole())
        return "its report does not contain exactly what this run added to it";
    // Standard output may have come without a name; whoever started the program has it then.
    const bool isThere = OS_IdentifyDescriptor(fd_, &present) == 0 &&
                         (fileName_ != nullptr ? present.names != 0 && nameLeadsHere()
                                               : present.names != 0 || opened_.names == 0);
    return isThere ? nullptr : "its report is no longer there";
}

void ReportStream::finish() {
    if (stream_ == nullptr)
        return;
    static_cast<void>(flush()); // reported where it failed
    static_cast<void>(OS_CloseStream(stream_));
    stream_ = nullptr;
}

bool ReportStream::removeIfCreated() {
    if (madePath_ == nullptr || !isLocked_ || opened_.size != 0 || !nameLeadsHere() || !isWhole())
        return false;
    again_.reset(-1);
    // Another process that has the file open would lose what it writes there.
    const bool isShared = OS_IsOpenElsewhere(fd_) != 0;
    const bool isGone = (isShared ? OS_CutFile(fd_, 0) : OS_RemoveFile(fd_, madePath_.get())) == 0;
    if (isGone)
        madePath_.reset();
    return isGone && written_ != 0;
}

void ReportStream::close() {
    finish();
    setMessageSink(nullptr);
    if (fileName_ == nullptr && isLocked_ && !again_.isOpen())
        OS_UnlockFile(fd_); // the file stays open in the program that started this one
    else if (fileName_ != nullptr && fd_ != -1 && _close(fd_) != 0 && !failed_)
        static_cast<void>(fail(errno));
    again_.reset(-1);
    fd_ = -1;
    isLocked_ = false;
}
