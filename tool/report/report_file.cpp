#include "tool/report/report_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "service/log/log.h"
#include "tool/file_lock.h"

using namespace qvledger;

constexpr int kPause = 10; // milliseconds

// ---- Opening ----

ReportFile::Opened ReportFile::open(const char *fileName) {
    fileName_ = fileName;
    fd_ = _fileno(stdout);
    const Opened opened = fileName != nullptr ? openByName() : lock();
    if (opened == Opened::Yes)
        isTerminal_ = _isatty(fd_) != 0;
    return opened;
}

const char *ReportFile::name() const {
    return fileName_ != nullptr ? fileName_ : "standard output";
}

// Retries if another run removed or replaced the file between open and lock.
ReportFile::Opened ReportFile::openByName() {
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
        again_.reset(-1);               // some systems free the name only when all descriptors are closed
        static_cast<void>(_close(fd_)); // nothing was written
        fd_ = -1;
    }
}

ReportFile::Opened ReportFile::lock() {
    kind_ = OS_KindOfOutput(fd_);
    if (!isFile())
        return Opened::Yes; // a closed descriptor fails at the first write
    if (OS_WriteAtEnd(fd_) != 0 || OS_IdentifyDescriptor(fd_, &opened_) != 0)
        return Opened::No;
    again_.reset(OS_OpenAgain(fd_));
    // Other programs share the descriptor of standard output, and would share its lock.
    switch (lockFile(fileName_ == nullptr && again_.isOpen() ? again_.get() : fd_, name())) {
    case LockResult::Locked:
        isLocked_ = true;
        break;
    case LockResult::NotGranted:
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                        "the report %s cannot be locked against other runs: %s", name(),
                        std::strerror(errno));
        break;
    case LockResult::GivenUp:
        return Opened::GivenUp;
    }
    // Another run may have written to the file or removed it during the wait.
    const std::uint64_t names = opened_.names;
    if (OS_IdentifyDescriptor(fd_, &opened_) != 0)
        return Opened::No;
    loggedBefore_ = logBytesIn(opened_);
    wasRemoved_ = fileName_ == nullptr && names != 0 && opened_.names == 0;
    return Opened::Yes;
}

bool ReportFile::nameLeadsHere() const {
    OS_fileIdentity named = {};
    return OS_IdentifyTarget(fileName_, &named) == 0 && OS_IsSameFile(named, opened_);
}

// ---- Writing ----

int ReportFile::write(std::string_view bytes) {
    int error = 0;
    std::size_t done = 0;
    while (done < bytes.size() && error == 0) {
        const int got = _write(fd_, bytes.data() + done, static_cast<unsigned>(bytes.size() - done));
        const int reason = got < 0 ? OS_WriteError() : 0;
        done += static_cast<std::size_t>(std::max(got, 0));
        if (done < bytes.size() && !isFile() && OS_NotedSignal() != 0)
            error = EINTR; // a reader that does not read must not keep the program from ending
        else if (reason == EAGAIN)
            OS_Sleep(kPause); // a non-blocking pipe
        else if (got <= 0 && reason != EINTR)
            error = got < 0 ? reason : EIO;
    }
    const std::size_t lineEnd = bytes.substr(0, done).rfind('\n');
    written_ += static_cast<std::int64_t>(done);
    openLine_ = static_cast<std::int64_t>(done - (lineEnd + 1)); // without a line end, npos + 1 is 0
    return error;
}

void ReportFile::cutBack() {
    if (!isLocked_ || openLine_ == 0)
        return;
    if (!isWhole() || OS_CutFile(fd_, end() - openLine_) != 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report ends in a part of a line");
        return;
    }
    written_ -= openLine_;
    openLine_ = 0;
}

// If the last byte cannot be read, assumes an incomplete line: an empty line does less harm than two joined
// lines.
bool ReportFile::endedWithLineEnd() const {
    return !isFile() || opened_.size == 0 || (again_.isOpen() && OS_LastByte(again_.get()) == '\n');
}

// ---- Checks, removing and closing ----

// The size of the file if only this run (including its log) has written to the file since the lock.
std::int64_t ReportFile::end() const {
    return opened_.size + written_ + logBytesIn(opened_) - loggedBefore_;
}

// True if, by its size, nothing else has written to the file or truncated it since the lock.
bool ReportFile::isWhole() const {
    OS_fileIdentity present = {};
    return OS_IdentifyDescriptor(fd_, &present) == 0 && present.size == end();
}

const char *ReportFile::whyNotSafe(int *error) {
    *error = 0;
    switch (kind_) {
    case OS_outputKind::File:
        return isLocked_ ? whyNotOnDisk(error) : "its report cannot be locked against other runs";
    case OS_outputKind::BlockDevice:
        return whyNotOnDisk(error);
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

const char *ReportFile::whyNotOnDisk(int *error) {
    if (_commit(fd_) != 0) {
        *error = errno != 0 ? errno : EIO;
        return "its lines have not all reached the disk";
    }
    if (isFile() && !isFolderSynced_ && !isSyncFailed_) {
        isFolderSynced_ = OS_SyncFolderOf(fd_) == 0;
        isSyncFailed_ = !isFolderSynced_;
    }
    return isSyncFailed_ ? "the name of its report has not reached the disk" : nullptr;
}

const char *ReportFile::whyNotRead() const {
    for (int pause = 1;; pause = std::min(2 * pause, kPause)) {
        const int unread = OS_UnreadBytes(fd_);
        if (unread <= 0)
            return unread == 0 ? nullptr : "the reader of its report has not read all of it";
        if (OS_NotedSignal() != 0)
            return "the run was asked to end before its report was read";
        OS_Sleep(pause);
    }
}

const char *ReportFile::whyNotInPlace() const {
    OS_fileIdentity present = {};
    if (!isFile())
        return nullptr;
    if (!isWhole())
        return "its report does not contain exactly what this run added to it";
    // The file of standard output may never have had a name; the program that opened it can still read it.
    const bool isThere = OS_IdentifyDescriptor(fd_, &present) == 0 &&
                         (fileName_ != nullptr ? present.names != 0 && nameLeadsHere()
                                               : present.names != 0 || opened_.names == 0);
    return isThere ? nullptr : "its report is no longer there";
}

bool ReportFile::removeIfCreated() {
    if (madePath_ == nullptr || !isLocked_ || opened_.size != 0 || !nameLeadsHere() || !isWhole())
        return false;
    again_.reset(-1);
    // If another process has the file open, removing the file would lose that process's output, so only
    // truncate it.
    const bool isShared = OS_IsOpenElsewhere(fd_) != 0;
    const bool isGone = (isShared ? OS_CutFile(fd_, 0) : OS_RemoveFile(fd_, madePath_.get())) == 0;
    if (isGone)
        madePath_.reset();
    return isGone && written_ != 0;
}

int ReportFile::close() {
    int error = 0;
    if (fileName_ == nullptr && isLocked_ && !again_.isOpen())
        OS_UnlockFile(fd_); // closing does not unlock the file: the parent process shares the descriptor
    else if (fileName_ != nullptr && fd_ != -1 && _close(fd_) != 0)
        error = errno;
    again_.reset(-1);
    fd_ = -1;
    isLocked_ = false;
    return error;
}
