// Numbered messages to the user, on the standard error stream, and entries in the program's log.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <variant>

namespace qvledger {

// Message codes.
enum : std::uint32_t {
#define MESSAGE(name, code, text) name = (code),
#include "tool/messages.inc"
};

// Sets the program name in messages, which is "qvledger" before the first call.
// REQUIRES: the name stays valid.
void setProgramName(const char *name);

// Receives messages instead of the standard error stream.
class MessageSink {
public:
    virtual void message(std::string_view text) = 0;

protected:
    ~MessageSink() = default;
};

// Sends messages to the sink; null restores the standard error stream.  REQUIRES: the sink outlives its use.
void setMessageSink(MessageSink *sink);

// An argument of a message: a text, or a number to print in decimal.
using MessageValue = std::variant<const char *, std::int32_t>;

// Prints a message.  A placeholder without an argument is removed.
void displayMessage(std::uint32_t msgCode, std::initializer_list<MessageValue> values);

// The message code for an ALA return code; kMsgUnknownError for an unknown return code.
std::uint32_t messageOf(std::uint32_t errCode);

// Prints a message with its arguments.
template <class... Values>
void DisplayMsg(std::uint32_t in_msgCode, const Values &...values) {
    displayMessage(in_msgCode, {values...});
}

// Prints the message for an ALA return code.
template <class... Values>
void DisplayMsgFromErr(std::uint32_t in_errCode, const Values &...values) {
    displayMessage(messageOf(in_errCode), {values...});
}

// Copies the unformatted text of a message to a buffer of in_bufSize bytes.  Uses the catalogue's text if it
// fits and all its placeholders occur in the default text, else the default text, cut if it does not fit.  An
// unknown code has the default text of kMsgUnknownError.
void GetMsg(std::uint32_t in_msgCode, std::uint32_t in_bufSize, char *inoutp_buf);

// Was a message catalogue with the text of kMsgUsage found?
bool hasCatalogue();

// Appends the log text of a return code to the log entry being built.  Appends nothing for success.
void printError(std::int32_t errRes);

// Writes a log entry for a return code.  The prefix comes before the text, and may be null.
void logFailure(const char *prefix, std::int32_t errCode, const char *file = __builtin_FILE(),
                std::int32_t line = __builtin_LINE());

// Prints the message for a return code and writes its log entry.
void reportFailure(std::int32_t errCode, const char *prefix, const char *file = __builtin_FILE(),
                   std::int32_t line = __builtin_LINE());

} // namespace qvledger
