#include "tool/messages.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>

#include "service/log.h"
#include "service/log_text.h"
#include "service/message.h"
#include "tool/placeholders.h"
#include "tool/progress.h"

using namespace qvledger;

constexpr std::uint32_t kFirstOwnMessage = 0x3c0000; // of set 60
constexpr std::uint32_t kRawSize = 1024;             // bytes of a message before its arguments are put in

namespace {

struct Message {
    std::uint32_t code;
    const char *text;
};

struct ReturnCode {
    std::int32_t number;
    std::uint32_t message;
    const char *logText;
};

} // namespace

static constexpr Message kMessages[] = {
#define MESSAGE(name, code, text) {name, text},
#include "tool/messages.inc"
};

static constexpr ReturnCode kReturnCodes[] = {
#define ALA_RETURN_CODE(number, name, message, logText) {number, message, logText},
#define ALA_UNNAMED_CODE(number, message, logText) {number, message, logText},
#include "ala/return_codes.inc"
};

static const char *defaultText(std::uint32_t msgCode) {
    const auto hasCode = [](std::uint32_t code) {
        return [code](const Message &m) { return m.code == code; };
    };
    const auto *message = std::find_if(std::begin(kMessages), std::end(kMessages), hasCode(msgCode));
    return message != std::end(kMessages) ? message->text : defaultText(kMsgUnknownError);
}

static ReturnCode findReturnCode(std::int64_t errCode) {
    const auto *row = std::find_if(std::begin(kReturnCodes), std::end(kReturnCodes),
                                   [&](const ReturnCode &code) { return code.number == errCode; });
    return row != std::end(kReturnCodes) ? *row : ReturnCode{0, kMsgUnknownError, "unknown error.\n"};
}

void qvledger::GetMsg(std::uint32_t in_msgCode, std::uint32_t in_bufSize, char *inoutp_buf) {
    const char *text = defaultText(in_msgCode);
    std::uint32_t count = 0;
    if (in_bufSize == 0 || (MSG_GetUnformatted(2, in_msgCode, 0, in_bufSize, &count, inoutp_buf) == 0 &&
                            placeholdersFit(inoutp_buf, text)))
        return;
    const std::size_t length = strnlen(text, in_bufSize - 1);
    std::memcpy(inoutp_buf, text, length);
    inoutp_buf[length] = '\0';
}

bool qvledger::hasCatalogue() {
    char text[kRawSize];
    std::uint32_t count = 0;
    return MSG_GetUnformatted(2, kMsgUsage, 0, sizeof text, &count, text) == 0;
}

static MessageSink *messageSink = nullptr;

void qvledger::setMessageSink(MessageSink *sink) {
    messageSink = sink;
}

static const char *programName = "qvledger";

void qvledger::setProgramName(const char *name) {
    programName = name;
}

// The numbered messages are printed unchanged; our own have the program's name before them.
static void print(std::uint32_t msgCode, std::string_view text) {
    LogText line;
    if (msgCode >= kFirstOwnMessage && msgCode != kMsgCheckUsage) {
        const std::size_t length = text.size() - (text.ends_with('\n') ? 1 : 0);
        line.append(programName);
        line.append(": ");
        line.appendVisible(text.substr(0, length));
        line.append("\n");
    } else {
        line.append(text);
    }
    eraseProgress();
    if (messageSink != nullptr)
        messageSink->message(line.view());
    else
        std::fwrite(line.view().data(), 1, line.view().size(), stderr);
}

static void display(std::uint32_t msgCode, std::va_list values) {
    char unfmtMsg[kRawSize] = "";
    GetMsg(msgCode, sizeof unfmtMsg, unfmtMsg);
    for (const char kind : passOverUnused(unfmtMsg, defaultText(msgCode)))
        if (kind == 'd')
            static_cast<void>(va_arg(values, int));
        else
            static_cast<void>(va_arg(values, const char *));
    std::va_list measured;
    va_copy(measured, values);
    const std::int32_t length = MSG_vsnprintf(nullptr, 0, unfmtMsg, measured);
    va_end(measured);
    if (length < 0)
        return;
    // Arguments have no bound of their own.  Without memory for all of it the raw text has to do.
    const std::unique_ptr<char[]> msgBuffer(new (std::nothrow) char[static_cast<std::size_t>(length) + 1]);
    if (msgBuffer != nullptr)
        MSG_vsprintf(msgBuffer.get(), unfmtMsg, values);
    print(msgCode, msgBuffer != nullptr ? msgBuffer.get() : unfmtMsg);
}

void qvledger::DisplayMsg(std::uint32_t in_msgCode, ...) {
    std::va_list values;
    va_start(values, in_msgCode);
    display(in_msgCode, values);
    va_end(values);
}

void qvledger::DisplayMsgFromErr(std::uint32_t in_errCode, ...) {
    std::va_list values;
    va_start(values, in_errCode);
    display(findReturnCode(in_errCode).message, values);
    va_end(values);
}

void qvledger::printError(std::int32_t errRes) {
    if (errRes != 0)
        LOG_CondAdd("%s", findReturnCode(errRes).logText);
}

void qvledger::logFailure(const char *prefix, std::int32_t errCode, const char *file, std::int32_t line) {
    if (LOG_StartMessage(LOG_ERROR, file, line, 0) == 0)
        return;
    if (prefix != nullptr)
        LOG_CondAdd("%s", prefix);
    printError(errCode);
    LOG_EndMessage();
}

void qvledger::tellFailure(std::int32_t errCode, const char *prefix, const char *file, std::int32_t line) {
    DisplayMsgFromErr(static_cast<std::uint32_t>(errCode));
    logFailure(prefix, errCode, file, line);
}
