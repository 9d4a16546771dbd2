// Buffers the report's lines and writes them to its file.
//
// Writes only whole lines until flush().  If the standard error stream writes to the same regular file,
// LineWriter also writes the messages, between lines.  After the first failure, writes nothing more.  Reports
// this failure; a closed pipe and a signal only in the program's log.
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

    // Starts writing to the file.  False if memory runs out.  REQUIRES: the file is open.
    bool begin();
    const ReportFile &file() const { return file_; }

    // Appends to the current line.  Lines are written when the buffer is full; on a terminal, after each
    // line.
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
            static_cast<void>(writeLines(false)); // failed() shows a failure
    }

    // True after the first failure.
    bool failed() const { return failed_; }
    // Writes the whole buffer.  False if this or an earlier write failed.
    bool flush() { return writeLines(true); }
    // Closes the file, and reports a failure.
    void close();
    // Calls flush(), then ReportFile::whyNotSafe().  Returns null, or the reason why the logs with these
    // lines must not be deleted.
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
    Malloced<char> lines_; // text not written yet
    std::size_t room_ = 0;
    std::size_t waiting_ = 0; // bytes in lines_
    bool hasBegun_ = false;
    bool failed_ = false;
};

} // namespace qvledger
