// Where the report goes: standard output, or a file that it is appended to.
//
// A report that is a file on a disk is held against other runs from its opening to its closing.  What is
// written reaches the system in whole lines, but for a line longer than the buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "ala/driver.h"
#include "platform/malloced.h"
#include "platform/os.h"

namespace qvledger {

constexpr char kStandardOutput[] = "standard output"; // in place of a name

class ReportStream {
public:
    enum class Opened : std::uint8_t {
        Yes,
        No,
        GivenUp // the program was asked to end while another run had the file
    };

    ReportStream() = default;
    ~ReportStream() { close(); }
    ReportStream(const ReportStream &) = delete;
    ReportStream &operator=(const ReportStream &) = delete;

    // Standard output if the name is null.
    Opened open(const char *givenFileName);

    std::FILE *stream() const { return fl; }
    bool isTerminal() const { return terminal; }
    // A file on a disk?
    bool isFile() const { return identity.regular; }
    // Is the report one of the server's logs?
    bool isLog(const char *server, const char *logPath) const {
        return identity.regular && ALA__IsLog(server, logPath, identity);
    }

    // Could something not be written?  The user was told, and nothing more is written.
    bool failed() const { return lost; }

    // Have all lines so far reached their place: written, and in a file also on its disk?  Null, or why a log
    // with these lines has to stay.
    const char *whyNotSafe();
    // Directly before a log goes: is the file that was made safe still the one that has the report's name?
    const char *whyNotInPlace() const;

    // Passes on all lines so far.  False when that failed, now or before.
    bool flush();
    // The same, for the last time.
    void finish();

    // A run that failed, or found nothing, leaves no file behind that it made itself; if others have it open
    // already, it leaves an empty one.  REQUIRES: finish().
    void removeIfCreated();

    void close();

private:
    Opened openFile();
    Opened hold();
    bool nameLeadsHere() const;
    static std::size_t takeBytes(void *stream, const char *bytes, std::size_t size);
    std::size_t take(const char *bytes, std::size_t size);
    bool writeLines(bool all);
    bool write(std::size_t size);
    bool beginLine();
    void count(std::size_t size);
    bool fail(int error);
    void cutBack();

    std::FILE *fl = nullptr;
    int fd = -1;
    Descriptor again;               // the same file once more: it can be read, and holds standard output
    const char *fileName = nullptr; // null: standard output
    Malloced<char> madePath;        // of the file, if this run made it
    OS_fileIdentity identity = {};  // when it was held
    bool isUnknown = false;         // the system does not tell what it is
    std::int64_t safeSize = 0;      // of what is on the disk
    bool terminal = false;
    bool held = false;
    bool folderSynced = false;
    bool begun = false;
    bool lost = false;
    std::size_t waiting = 0;   // bytes in the buffer
    std::int64_t written = 0;  // bytes in all
    std::int64_t openLine = 0; // of these, behind the last line end
};

} // namespace qvledger
