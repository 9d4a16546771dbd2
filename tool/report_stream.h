// Where the report goes: standard output, or a file that it is appended to.
#pragma once

#include <cstdio>

class ReportStream {
public:
    ReportStream() = default;
    ~ReportStream() { close(); }
    ReportStream(const ReportStream &) = delete;
    ReportStream &operator=(const ReportStream &) = delete;

    // Standard output if the name is null.  False when the file cannot be opened for appending.
    bool open(const char *inp_fileName);

    std::FILE *stream() const { return fl; }

    // Have all lines so far reached their place?  Flushed without an error, and in a file on its disk.
    bool isSafe();

    // A failure to write the last lines goes to the log.
    void close();

    // A run that failed, or found nothing, leaves no file behind that it made itself.
    void removeIfCreated();

private:
    std::FILE *fl = nullptr;
    const char *fileName = nullptr;
    bool created = false;
    bool folderSynced = false;
};
