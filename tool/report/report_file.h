// The file of the report: standard output, or a named file to which the report is appended.
//
// A regular file is locked against other runs from open() to close(), and every write appends to it.
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
        GivenUp // a signal asked the program to end while another run had the file locked
    };

    ReportFile() = default;
    ~ReportFile() { static_cast<void>(close()); }
    ReportFile(const ReportFile &) = delete;
    ReportFile &operator=(const ReportFile &) = delete;

    // Opens the named file, or standard output if the name is null.
    Opened open(const char *fileName);
    // Closes and unlocks the file.  Returns 0, or the errno value if written data may be lost.
    int close();

    const char *name() const; // name of the report in messages
    bool isStandardOutput() const { return fileName_ == nullptr; }
    bool isTerminal() const { return isTerminal_; }
    bool isFile() const { return kind_ == OS_outputKind::File; }
    bool isMessagesFile() const { return isFile() && qvledger::isMessagesFile(fd_); }
    // Was the file of standard output removed while this run waited for its lock?
    bool wasRemoved() const { return wasRemoved_; }
    // Is the report one of the server's logs?
    bool isLog(const char *server, const char *logPath) const {
        return isFile() && qvledger::isLog(server, logPath, opened_, again_.get());
    }

    // Writes all bytes.  Returns 0, or the errno value if only some bytes were written.  EINTR: a signal
    // asked the program to end while the reader of a pipe read nothing.
    int write(std::string_view bytes);
    // Removes an incomplete line from the end of the file, unless another program has written to the file
    // since.
    void cutBack();
    // When the file was locked, was it empty or did it end with a line end?  True for pipes and devices.
    bool endedWithLineEnd() const;

    // Checks that everything written is safe: synced to the disk or, in a pipe, read by the reader.  Waits
    // for the reader of a pipe.  Returns null, or the reason why a log with lines in the report must not be
    // deleted.  *error: errno of a failed sync, else 0.
    const char *whyNotSafe(int *error);
    // Checks the report; call this function directly before a log is removed.  Returns null if the report is
    // not a file, or if it still has its name (standard output may have had no name) and contains exactly
    // what it contained before plus what this run wrote.  Otherwise returns the reason why the log must not
    // be deleted.
    const char *whyNotInPlace() const;

    // Removes a file that this run created.  If another process has the file open, truncates the file
    // instead.  True if lines of the report were discarded.
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
    std::int64_t openLine_ = 0;     // bytes written after the last line end
    std::int64_t loggedBefore_ = 0; // bytes that the program's log wrote to the same file before the lock
};

} // namespace qvledger
