#include "tool/report_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "service/log.h"
#include "tool/holding.h"
#include "tool/messages.h"

using namespace qvledger;

constexpr std::size_t kStreamSize = 32 * 1024;
constexpr int kPause = 10; // milliseconds

// Of the one report that a program writes.
static char streamBuffer[kStreamSize];
static char lines[256 * 1024]; // on their way to the system

// ---- Opening ----

ReportStream::Opened ReportStream::open(const char *givenFileName) {
    fileName = givenFileName;
    fd = _fileno(stdout);
    const Opened opened = fileName != nullptr ? openFile() : hold();
    if (opened != Opened::Yes)
        return opened;
    terminal = _isatty(fd) != 0;
    fl = OS_StreamTo(takeBytes, this);
    if (fl == nullptr)
        return Opened::No;
    static_cast<void>( // refused, it has a buffer of its own
        std::setvbuf(fl, streamBuffer, isTerminal() ? _IOLBF : _IOFBF, sizeof streamBuffer));
    return Opened::Yes;
}

// Another run may remove or replace the file that was opened before it lets go of it.
ReportStream::Opened ReportStream::openFile() {
    for (;;) {
        char *made = nullptr;
        fd = OS_OpenToAppend(fileName, &made);
        madePath.reset(made);
        if (fd == -1) {
            LOG_CondMessage(LOG_DETAIL, __FILE__, __LINE__, "%s cannot be opened: %s", fileName,
                            std::strerror(errno));
            return OS_NotedSignal() != 0 ? Opened::GivenUp : Opened::No;
        }
        const Opened opened = hold();
        if (opened != Opened::Yes || !held || nameLeadsHere())
            return opened;
        again.reset(-1);               // a name may stay taken until nobody has its file open
        static_cast<void>(_close(fd)); // nothing was written
        fd = -1;
    }
}

ReportStream::Opened ReportStream::hold() {
    if (OS_IdentifyDescriptor(fd, &identity) != 0) {
        identity = {};
        isUnknown = errno != EBADF; // closed: the first write fails
    }
    if (!identity.regular)
        return Opened::Yes;
    const char *name = fileName != nullptr ? fileName : kStandardOutput;
    again.reset(OS_OpenAgain(fd));
    // Standard output is shared with other programs, and so would be a lock on it.
    switch (holdFile(fileName == nullptr && again.isOpen() ? again.get() : fd, name)) {
    case ALA__holdResult::Held:
        held = true;
        break;
    case ALA__holdResult::NotKnown:
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report %s cannot be held against other runs: %s",
                        name, std::strerror(errno));
        break;
    case ALA__holdResult::GivenUp:
        return Opened::GivenUp;
    }
    // Another run may have written to it first, or removed it.
    const std::uint64_t names = identity.names;
    if (OS_IdentifyDescriptor(fd, &identity) != 0)
        return Opened::No;
    if (fileName == nullptr && names != 0 && identity.names == 0)
        static_cast<void>(fail(ENOENT));
    return Opened::Yes;
}

bool ReportStream::nameLeadsHere() const {
    OS_fileIdentity named = {};
    return OS_IdentifyTarget(fileName, &named) == 0 && OS_IsSameFile(named, identity);
}

// ---- Writing ----

std::size_t ReportStream::takeBytes(void *stream, const char *bytes, std::size_t size) {
    return static_cast<ReportStream *>(stream)->take(bytes, size);
}

std::size_t ReportStream::take(const char *bytes, std::size_t givenSize) {
    for (std::size_t taken = 0; taken < givenSize && !lost;) {
        const std::size_t size = std::min(givenSize - taken, sizeof lines - waiting);
        std::memcpy(lines + waiting, bytes + taken, size);
        waiting += size;
        taken += size;
        if (waiting == sizeof lines)
            static_cast<void>(writeLines(false)); // lost tells
    }
    if (!lost && isTerminal())
        static_cast<void>(writeLines(false));
    return lost ? 0 : givenSize;
}

// The whole lines in the buffer; everything if that is asked for, or if there is no line end in a full one.
bool ReportStream::writeLines(bool all) {
    const std::size_t lineEnd = std::string_view(lines, waiting).rfind('\n');
    std::size_t size = waiting;
    if (lineEnd != std::string_view::npos && !all)
        size = lineEnd + 1;
    else if (waiting != sizeof lines && !all)
        return !lost;
    if (lost || (size != 0 && !write(size)))
        return false;
    waiting -= size;
    std::memmove(lines, lines + size, waiting);
    return true;
}

// Counts what has reached the system.
void ReportStream::count(std::size_t size) {
    const std::size_t lineEnd = std::string_view(lines, size).rfind('\n');
    written += static_cast<std::int64_t>(size);
    openLine = lineEnd == std::string_view::npos ? openLine + static_cast<std::int64_t>(size)
                                                 : static_cast<std::int64_t>(size - lineEnd) - 1;
}

bool ReportStream::write(std::size_t givenSize) {
    if (!beginLine())
        return false;
    std::size_t size = givenSize;
    for (std::size_t done = 0; done < size;) {
        const int got = _write(fd, lines + done, static_cast<unsigned>(size - done));
        const int error = got < 0 ? errno : 0;
        done += static_cast<std::size_t>(std::max(got, 0));
        if (done < size && !identity.regular && OS_NotedSignal() != 0) {
            // Whoever should take it does not, and the program is asked to end: only the line at hand goes
            // on.
            const void *lineEnd = std::memchr(lines + done, '\n', size - done);
            const bool atLineEnd = done == 0 || lines[done - 1] == '\n';
            size = atLineEnd || lineEnd == nullptr
                       ? done
                       : static_cast<std::size_t>(static_cast<const char *>(lineEnd) - lines) + 1;
        }
        if (error == EAGAIN && OS_NotedSignal() == 0) {
            OS_Sleep(kPause); // a pipe that does not wait by itself
        } else if (got <= 0 && error != EINTR) {
            count(done);
            return fail(got < 0 ? error : EIO);
        }
    }
    count(size);
    return size == givenSize || fail(EINTR);
}

// What another run or program could not finish stays a line of its own.
bool ReportStream::beginLine() {
    if (begun)
        return true;
    begun = true;
    if (!identity.regular || identity.size == 0)
        return true;
    // Where it cannot be known, an empty line does less harm than two lines in one.
    if (again.isOpen() && OS_LastByte(again.get()) == '\n')
        return true;
    return _write(fd, "\n", 1) == 1 || fail(errno);
}

bool ReportStream::flush() {
    const bool flushed = fl == nullptr || OS_FlushStream(fl) == 0;
    if (!flushed && !lost)
        return fail(errno); // what was written has not come here
    return !lost && writeLines(true);
}

// False, for the caller to return.
bool ReportStream::fail(int error) {
    const bool told = error == EPIPE || error == EINTR; // by whoever stopped reading, or asked for the end
    const char *reason = std::strerror(error);
    lost = true;
    waiting = 0;
    if (!told && fileName != nullptr)
        DisplayMsg(kMsgReportLost, fileName, reason);
    else if (!told)
        DisplayMsg(kMsgOutputLost, reason);
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report could not be written: %s: %s",
                    fileName != nullptr ? fileName : kStandardOutput, reason);
    cutBack();
    errno = error;
    return false;
}

// Takes back the part of a line that was written last, if nothing stands behind it.
void ReportStream::cutBack() {
    if (!held || openLine == 0 || (fileName == nullptr && !again.isOpen()))
        return;
    OS_fileIdentity present = {};
    const std::int64_t end = _lseeki64(fd, 0, SEEK_CUR);
    if (OS_IdentifyDescriptor(fd, &present) != 0 || present.size != end ||
        OS_CutFile(fd, end - openLine) != 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "the report ends in a part of a line");
        return;
    }
    written -= openLine;
    openLine = 0;
}

// ---- What becomes of it ----

const char *ReportStream::whyNotSafe() {
    if (!flush())
        return "its lines have not all reached the report";
    if (isUnknown)
        return "its report cannot be looked at";
    if (!identity.regular)
        return nullptr; // it has no disk, and who reads it has it
    if (!held)
        return "its report cannot be held against other runs";
    if (_commit(fd) != 0) {
        static_cast<void>(fail(errno)); // once lost, a later success means nothing
        return "its lines have not all reached the disk";
    }
    OS_fileIdentity present = {};
    if (OS_IdentifyDescriptor(fd, &present) != 0)
        return "its report cannot be looked at";
    safeSize = present.size;
    if (madePath != nullptr && !folderSynced) {
        folderSynced = OS_SyncFolderOf(madePath.get()) == 0;
        if (!folderSynced)
            return "the name of its report has not reached the disk";
    }
    return nullptr;
}

const char *ReportStream::whyNotInPlace() const {
    OS_fileIdentity present = {};
    if (!identity.regular)
        return nullptr;
    if (OS_IdentifyDescriptor(fd, &present) != 0 || present.size < safeSize)
        return "its report is no longer whole";
    // Standard output may have come without a name; whoever started the program has it then.
    const bool isThere = fileName != nullptr ? present.names != 0 && nameLeadsHere()
                                             : present.names != 0 || identity.names == 0;
    return isThere ? nullptr : "its report is no longer there";
}

void ReportStream::finish() {
    if (fl == nullptr)
        return;
    static_cast<void>(flush()); // told where it failed
    static_cast<void>(OS_CloseStream(fl));
    fl = nullptr;
}

void ReportStream::removeIfCreated() {
    OS_fileIdentity present = {};
    if (madePath == nullptr || !held || identity.size != 0 || !nameLeadsHere() ||
        OS_IdentifyDescriptor(fd, &present) != 0 || present.size != written)
        return;
    again.reset(-1);
    if (OS_IsOpenElsewhere(fd) != 0) {
        // Who waits for it as standard output would write to nowhere.
        static_cast<void>(OS_CutFile(fd, 0)); // or this run's lines stay
        return;
    }
    if (OS_RemoveFile(fd, madePath.get()) == 0)
        madePath.reset();
}

void ReportStream::close() {
    finish();
    if (fileName == nullptr && held && !again.isOpen())
        OS_UnlockFile(fd); // whoever started the program goes on with the same file
    else if (fileName != nullptr && fd != -1 && _close(fd) != 0 && !lost)
        static_cast<void>(fail(errno));
    again.reset(-1);
    fd = -1;
    held = false;
}
