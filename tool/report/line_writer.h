// The lines of the report on their way into its file.
//
// Lines are written whole.  Messages whose standard error stream is the same file are written here too,
// between lines.  What could not be written is reported once, and nothing more is written.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/malloced.h"
#include "tool/messages.h"
#include "tool/report/report_file.h"

namespace qvledger {

class LineWriter final : MessageSink {
public:
    // REQUIRES: the file outlives this object.
    explicit LineWriter(ReportFile &file) : file_(file) {}
    ~LineWriter() { setMessageSink(nullptr); }
    LineWriter(const LineWriter &) = delete;
    LineWriter &operator=(const LineWriter &) = delete;

    // Takes up an open file.  False when memory runs out.
    bool begin();
    const ReportFile &file() const { return file_; }

    // Adds to the line.  Lines are passed on when there are enough of them, on a terminal at once.
    void put(std::string_view text) {
        if (text.size() > room_ - waiting_) [[unlikely]]
            return putLong(text);
        std::memcpy(lines_.get() + waiting_, text.data(), text.size());
        waiting_ += text.size();
    }
    void put(char character) { put(std::string_view(&character, 1)); }
    void endLine() {
        put('\n');
        if (file_.isTerminal())
            static_cast<void>(writeLines(false)); // failed() reports it
    }

    // Could something not be written?  It was reported.
    bool failed() const { return failed_; }
    // Passes on everything.  False when that failed, now or before.
    bool flush() { return writeLines(true); }
    // Closes the file.
    void close();
    // flush(), and ReportFile::whyNotSafe.
    const char *whyNotSafe();

private:
    void putLong(std::string_view text);
    bool makeRoom(std::size_t size);
    bool writeLines(bool all);
    bool write(std::string_view bytes);
    bool beginLine();
    void message(std::string_view text) override;
    bool fail(int error);

    ReportFile &file_;
    Malloced<char> lines_; // not written yet
    std::size_t room_ = 0;
    std::size_t waiting_ = 0; // bytes in lines_
    bool hasBegun_ = false;
    bool failed_ = false;
};

} // namespace qvledger
