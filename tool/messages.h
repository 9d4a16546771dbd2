// What the tool tells: numbered messages to the user, on the standard error stream, and entries to the log.
#pragma once

#include <cstdint>

namespace qvledger {

// Messages that the driver prints by their code; ala/return_codes.inc names those of return codes.
constexpr std::uint32_t kMsgNoMemory = 0x3b0066;
constexpr std::uint32_t kMsgUnknownError = 0x3b0069;
constexpr std::uint32_t kMsgBadStartDate = 0x3b006a;
constexpr std::uint32_t kMsgBadEndDate = 0x3b006b;
constexpr std::uint32_t kMsgBadMonth = 0x3b006c;
constexpr std::uint32_t kMsgBadDay = 0x3b006d;
constexpr std::uint32_t kMsgUsage = 0x3b006e;
constexpr std::uint32_t kMsgReportFile = 0x3b006f;
constexpr std::uint32_t kMsgEnvironment = 0x3b0070;
constexpr std::uint32_t kMsgCloseFailed = 0x3b0074;
constexpr std::uint32_t kMsgNoLogs = 0x3b0079;
constexpr std::uint32_t kMsgWaiting = 0x3c0001;
constexpr std::uint32_t kMsgReportLost = 0x3c0002;
constexpr std::uint32_t kMsgOutputLost = 0x3c0003;
constexpr std::uint32_t kMsgLeftAside = 0x3c0004;
constexpr std::uint32_t kMsgServerFailed = 0x3c0005;

// Prints a message with its arguments.
void DisplayMsg(std::uint32_t in_msgCode, ...);

// Prints the message that a return code of the facility leads to.
void DisplayMsgFromErr(std::uint32_t in_errCode, ...);

// The raw text of a message: the catalogue's if its placeholders are among the default one's, else the
// default one.  A code that is none gets the text of kMsgUnknownError.  The text is cut where the buffer
// ends.
void GetMsg(std::uint32_t in_msgCode, std::uint32_t in_bufSize, char *inoutp_buf);

// Appends the log's text of a return code to the entry being built; nothing for success.
void printError(std::int32_t errRes);

// A log entry for a failure with a return code, behind a prefix unless that is null.
void logFailure(const char *prefix, std::int32_t errCode, const char *file = __builtin_FILE(),
                std::int32_t line = __builtin_LINE());

// The message and the log entry of a failure with a return code.
void tellFailure(std::int32_t errCode, const char *prefix, const char *file = __builtin_FILE(),
                 std::int32_t line = __builtin_LINE());

} // namespace qvledger
