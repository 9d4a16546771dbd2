// The file of the report: standard output, or a named file to which the report is appended.
//
// Every write appends to a regular file.  The file is locked against other runs from open() to close(), if
// the system can lock it.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/driver/session.h"
#include "platform/malloced.h"
#include "platform/os.h"
#include "tool/file_lock.h"

namespace qvledger {

class ReportFile {
public:
    enum class Opened : std::uint8_t {
        Yes,
        No,
        GivenUp // a signal asked the program to end before the file was opened and locked
    };

    ReportFile() = default;
    ~ReportFile() { static_cast<void>(close()); }
    ReportFile(const ReportFile &) = delete;
    ReportFile &operator=(const ReportFile &) = delete;

    // Opens the named file, or standard output if the name is null.
    Opened open(const char *fileName);
    // Unlocks the file, and closes it unless it is standard output.  Returns 0, or the errno value if written
    // data may be lost.
    int close();

    const char *name() const; // name of the report in messages
    bool isStandardOutput() const { return fileName_ == nullptr; }
    bool isTerminal() const { return isTerminal_; }
    bool isFile() const { return kind_ == OS_outputKind::File; }
    bool isMessagesFile() const { return isFile() && qvledger::isMessagesFile(fd_); }
    // Was the file of standard output removed while this run waited for its lock?
    bool wasRemoved() const { return wasRemoved_; }
    // Is the report a log in this directory?  For the exact conditions, see ala/driver/session.h.
    bool isLog(const char *server, const char *logPath) const {
        return isFile() && qvledger::isLog(server, logPath, opened_, again_.get());
    }

    // Writes all bytes.  Returns 0, or an errno value if not all bytes were written.  EINTR: a signal
    // asked the program to end while a pipe or device did not accept all bytes.
    int write(std::string_view bytes);
    // Removes an incomplete line of this run from the end of the file, unless the file is not locked or
    // another program has written to it since the lock.
    void cutBack();
    // Was the file empty when it was locked, or does it end with a line end?  False if its last byte cannot
    // be read.  True if it is not a regular file.
    bool endedWithLineEnd() const;

    // Checks that everything written is safe: in a locked file, synced to the disk; in a pipe, read by the
    // reader, for which this function waits.  Returns null, or the reason why a log with lines in the report
    // must not be deleted.  A terminal is not checked.  *error: errno if the file could not be synced, else
    // 0.
    const char *whyNotSafe(int *error);
    // Checks that others have not removed or changed the report and, if it was opened by name, not renamed
    // it.  Call this function directly before a log is deleted.  Returns null, or the reason why the log must
    // not be deleted.  A report that is not a regular file is not checked.  For standard output, the file may
    // be one that never had a name.
    const char *whyNotInPlace() const;

    // Removes a file that this run created, unless others have changed or renamed it.  If another process has
    // the file open, truncates the file instead.  True if written text was discarded.
    bool removeIfCreated();

private:
    Opened openByName();
    Opened lock();
    bool nameLeadsHere() const;
    std::int64_t end() const;
    bool isWhole() const;
    const char *whyNotOnDisk(int *error);
    const char *whyNotRead() const;

    int fd_ = -1;
    OS_outputKind kind_ = OS_outputKind::Unknown;
    Descriptor again_;               // a second descriptor, to read the file and to lock standard output
    const char *fileName_ = nullptr; // null: standard output
    Malloced<char> madePath_;        // path of the file, if this run created it
    OS_fileIdentity opened_ = {};    // the file when it was locked
    bool isTerminal_ = false;
    bool isLocked_ = false;
    bool wasRemoved_ = false;
    bool isFolderSynced_ = false;
    bool isSyncFailed_ = false;
    std::int64_t written_ = 0;      // bytes written
    std::int64_t openLine_ = 0;     // bytes of an incomplete line at the end of the file
    std::int64_t loggedBefore_ = 0; // bytes that the program's log wrote to the same file before the lock
};

} // namespace qvledger
