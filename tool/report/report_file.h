// Where the report goes: standard output, or a file that it is appended to.
//
// A report that is a file is locked against other runs from its opening to its closing, and every write goes
// to its end.
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
        GivenUp // the program was asked to end while another run had the file
    };

    ReportFile() = default;
    ~ReportFile() { static_cast<void>(close()); }
    ReportFile(const ReportFile &) = delete;
    ReportFile &operator=(const ReportFile &) = delete;

    // Standard output if the name is null.
    Opened open(const char *fileName);
    // 0, or the reason why what was written may be lost.
    int close();

    const char *name() const; // for messages
    bool isStandardOutput() const { return fileName_ == nullptr; }
    bool isTerminal() const { return isTerminal_; }
    bool isFile() const { return kind_ == OS_outputKind::File; }
    bool isMessagesFile() const { return isFile() && qvledger::isMessagesFile(fd_); }
    // Was standard output's file removed while this run waited for it?
    bool wasRemoved() const { return wasRemoved_; }
    // Is the report one of the server's logs?
    bool isLog(const char *server, const char *logPath) const {
        return isFile() && qvledger::isLog(server, logPath, opened_, again_.get());
    }

    // Writes all of the bytes.  0, or the reason (errno) why only some were written; EINTR: the program was
    // asked to end while a reader took nothing.
    int write(std::string_view bytes);
    // Takes back the part of a line that was written last, unless others have written since.
    void cutBack();
    // May a line begin where the file ended when it was opened?
    bool endedInLine() const;

    // Have all bytes reached their place: in a file its disk, in a pipe its reader?  Waits for the reader.
    // Null, or why a log with lines there has to stay.  *error: what a failed sync gave, else 0.
    const char *whyNotSafe(int *error);
    // Directly before a log is removed: does the report still have its name, and does it contain nothing but
    // what was in it and what this run wrote?  Null, or why the log has to stay.
    const char *whyNotInPlace() const;

    // Removes a file that this run made; if another process has it open, empties it.  True if bytes were lost
    // with it.
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
    Descriptor again_;               // the same file once more, to read it and to lock standard output
    const char *fileName_ = nullptr; // null: standard output
    Malloced<char> madePath_;        // of the file, if this run made it
    OS_fileIdentity opened_ = {};    // a file, as it was when it was locked
    bool isTerminal_ = false;
    bool isLocked_ = false;
    bool wasRemoved_ = false;
    bool isFolderSynced_ = false;
    bool isSyncFailed_ = false;
    std::int64_t written_ = 0;      // bytes in all
    std::int64_t openLine_ = 0;     // of these, after the last line end
    std::int64_t loggedBefore_ = 0; // bytes of the program's log in the same file, when it was locked
};

} // namespace qvledger
