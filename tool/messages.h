// What the tool tells: numbered messages to the user, on the standard error stream, and entries to the log.
#pragma once

#include <cstdint>
#include <string_view>

namespace qvledger {

// The messages' codes.
enum : std::uint32_t {
#define MESSAGE(name, code, text) name = (code),
#include "tool/messages.inc"
};

// Whose messages they are; "qvledger" until this is called.  The name must outlive them.
void setProgramName(const char *name);

// Takes the messages in the place of the standard error stream.
class MessageSink {
public:
    virtual void message(std::string_view text) = 0;

protected:
    ~MessageSink() = default;
};

// Null: the standard error stream again.
void setMessageSink(MessageSink *sink);

// Prints a message with its arguments.
void DisplayMsg(std::uint32_t in_msgCode, ...);

// Prints the message that a return code of the facility leads to.
void DisplayMsgFromErr(std::uint32_t in_errCode, ...);

// The raw text of a message: the catalogue's if its placeholders are among the default one's, else the
// default one.  A code that is none gets the text of kMsgUnknownError.  The text is cut where the buffer
// ends.
void GetMsg(std::uint32_t in_msgCode, std::uint32_t in_bufSize, char *inoutp_buf);

// Does a catalogue give the messages?
bool hasCatalogue();

// Appends the log's text of a return code to the entry being built; nothing for success.
void printError(std::int32_t errRes);

// A log entry for a failure with a return code, behind a prefix unless that is null.
void logFailure(const char *prefix, std::int32_t errCode, const char *file = __builtin_FILE(),
                std::int32_t line = __builtin_LINE());

// The message and the log entry of a failure with a return code.
void tellFailure(std::int32_t errCode, const char *prefix, const char *file = __builtin_FILE(),
                 std::int32_t line = __builtin_LINE());

} // namespace qvledger
