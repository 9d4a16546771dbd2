// What the tool tells: numbered messages to the user, on the standard error stream, and entries to the log.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <variant>

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

// An argument of a message: a text, or a number printed in decimal.
using MessageValue = std::variant<const char *, std::int32_t>;

// Prints a message.  A placeholder without an argument prints nothing.
void displayMessage(std::uint32_t msgCode, std::initializer_list<MessageValue> values);

// The code of the message for a return code of the facility.
std::uint32_t messageOf(std::uint32_t errCode);

// Prints a message with its arguments.
template <class... Values>
void DisplayMsg(std::uint32_t in_msgCode, const Values &...values) {
    displayMessage(in_msgCode, {values...});
}

// Prints the message for a return code of the facility.
template <class... Values>
void DisplayMsgFromErr(std::uint32_t in_errCode, const Values &...values) {
    displayMessage(messageOf(in_errCode), {values...});
}

// The raw text of a message: the catalogue's if each of its placeholders is one of the default text's, with
// the same kind, else the default text.  An unknown code gets the text of kMsgUnknownError.  The text is cut
// where the buffer ends.
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
