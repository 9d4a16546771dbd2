// Where the report goes: standard output, or a file that it is appended to.
//
// A report that is a file is locked against other runs from its opening to its closing, and every write goes
// to its end.  Lines are written whole.  Messages whose standard error stream is the same file are written
// here too, between lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "ala/driver.h"
#include "platform/malloced.h"
#include "platform/os.h"
#include "tool/messages.h"

namespace qvledger {

constexpr char kStandardOutput[] = "standard output"; // in place of a name

class ReportStream final : MessageSink {
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
    Opened open(const char *fileName);

    std::FILE *stream() const { return stream_; }
    bool isTerminal() const { return isTerminal_; }
    bool isFile() const { return kind_ == OS_outputKind::File; }
    // Is the report one of the server's logs?
    bool isLog(const char *server, const char *logPath) const {
        return isFile() && ALA__IsLog(server, logPath, opened_, again_.get());
    }

    // Could something not be written?  The user was told, and nothing more is written.
    bool failed() const { return failed_; }

    // Have all lines so far reached their place: in a file its disk, in a pipe its reader?  Waits for the
    // reader.  Null, or why a log with these lines has to stay.
    const char *whyNotSafe();
    // Directly before a log is removed: does the report still have its name, and does it contain nothing but
    // what was in it and what this run wrote?  Null, or why the log has to stay.
    const char *whyNotInPlace() const;

    // Passes on all lines so far.  False when that failed, now or before.
    bool flush();
    // The same, for the last time.
    void finish();

    // Removes a file that this run made; if another process has it open, empties it.  True if lines were lost
    // with it.  REQUIRES: finish().
    bool removeIfCreated();

    void close();

private:
    Opened openFile();
    Opened lock();
    bool nameLeadsHere() const;
    bool isWhole() const;
    static std::size_t takeBytes(void *stream, const char *bytes, std::size_t size);
    std::size_t take(const char *bytes, std::size_t size);
    bool makeRoom(std::size_t size);
    bool writeLines(bool all);
    bool write(const char *bytes, std::size_t size);
    bool beginLine();
    void message(std::string_view text) override;
    bool fail(int error);
    void cutBack();
    const char *whyNotOnDisk();
    const char *whyNotRead() const;

    std::FILE *stream_ = nullptr;
    int fd_ = -1;
    OS_outputKind kind_ = OS_outputKind::Unknown;
    Descriptor again_;               // the same file once more, to read it and to lock standard output
    const char *fileName_ = nullptr; // null: standard output
    Malloced<char> madePath_;        // of the file, if this run made it
    OS_fileIdentity opened_ = {};    // a file, as it was when it was locked
    bool isTerminal_ = false;
    bool isLocked_ = false;
    bool isFolderSynced_ = false;
    bool isSyncFailed_ = false;
    bool hasBegun_ = false;
    bool failed_ = false;
    Malloced<char> lines_; // not written yet
    std::size_t room_ = 0;
    std::size_t waiting_ = 0;   // bytes in lines_
    std::int64_t written_ = 0;  // bytes in all
    std::int64_t openLine_ = 0; // of these, after the last line end
};

} // namespace qvledger
