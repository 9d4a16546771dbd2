#include "tool/messages.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "service/log/log.h"
#include "service/log/log_text.h"
#include "service/messages/message.h"
#include "tool/progress.h"

using namespace qvledger;

constexpr std::uint32_t kFirstOwnMessage = 0x3c0000; // set 60
constexpr std::uint32_t kRawSize = 1024;             // bytes of an unformatted message

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

// Do all placeholders of the text ("%1$s", "%2$d") occur in the default text?
static bool placeholdersFit(std::string_view text, std::string_view defaultText) {
    for (std::size_t at = text.find('%'); at < text.size(); at = text.find('%', at)) {
        const bool isPercent = text.substr(at, 2) == "%%";
        const std::string_view placeholder = text.substr(at, isPercent ? 2 : 4);
        if (!isPercent && (placeholder.size() < 4 || defaultText.find(placeholder) == std::string_view::npos))
            return false;
        at += placeholder.size();
    }
    return true;
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

static void appendValue(LogText &line, const MessageValue &value, bool isOwn) {
    if (const auto *number = std::get_if<std::int32_t>(&value))
        line.append(std::to_string(*number));
    else if (isOwn)
        line.appendVisible(std::get<const char *>(value));
    else
        line.append(std::get<const char *>(value));
}

// Messages of set 59 and kMsgCheckUsage print their arguments unchanged.  All others begin with the program's
// name, and control characters in their arguments are escaped.
void qvledger::displayMessage(std::uint32_t msgCode, std::initializer_list<MessageValue> values) {
    char text[kRawSize];
    GetMsg(msgCode, sizeof text, text);
    const bool isOwn = msgCode >= kFirstOwnMessage && msgCode != kMsgCheckUsage;
    LogText line;
    if (isOwn) {
        line.append(programName);
        line.append(": ");
    }
    for (const char *at = text; *at != '\0'; ++at) {
        if (*at != '%' || *++at == '%') {
            line.append({at, 1});
            continue;
        }
        const auto index = static_cast<std::size_t>(*at - '1');
        if (index < values.size())
            appendValue(line, values.begin()[index], isOwn);
        at += 2; // "$s" or "$d"
    }
    if (isOwn && !line.view().ends_with('\n'))
        line.end('\n'); // a catalogue's text may lack the line end
    eraseProgress();
    if (messageSink != nullptr)
        messageSink->message(line.view());
    else
        std::fwrite(line.view().data(), 1, line.view().size(), stderr);
}

std::uint32_t qvledger::messageOf(std::uint32_t errCode) {
    return findReturnCode(errCode).message;
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

void qvledger::reportFailure(std::int32_t errCode, const char *prefix, const char *file, std::int32_t line) {
    DisplayMsgFromErr(static_cast<std::uint32_t>(errCode));
    logFailure(prefix, errCode, file, line);
}
