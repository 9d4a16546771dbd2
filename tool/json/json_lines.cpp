// This file is also an example for users of the Accounting Log Access library: it reads logs only through
// ala/ala.h.
#include "json_lines.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

using namespace qvledger;

// ---- JSON ----

// Length in bytes of the UTF-8 character at the beginning of the text; 0 if the text does not begin with a
// valid character.
static std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    for (std::size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80)
            return 0;
    // Rejects overlong forms, surrogates, and characters above U+10FFFF.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 0;
    return length;
}

static void appendControl(std::string &line, unsigned char byte) {
    constexpr std::string_view named = "\b\f\n\r\t";
    constexpr std::string_view letters = "bfnrt";
    constexpr std::string_view digits = "0123456789abcdef";
    line += '\\';
    if (const std::size_t at = named.find(static_cast<char>(byte)); at != named.npos) {
        line += letters[at];
        return;
    }
    line += "u00";
    line += digits[byte >> 4];
    line += digits[byte & 15];
}

// Appends a JSON string.  Each byte that is not part of a valid character becomes U+FFFD.
static void appendText(std::string &line, std::string_view text) {
    line += '"';
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const auto first = static_cast<unsigned char>(text[0]);
        if (length == 0) {
            line += "\xEF\xBF\xBD";
        } else if (first < 0x20) {
            appendControl(line, first);
        } else {
            if (first == '"' || first == '\\')
                line += '\\';
            line.append(text.substr(0, length));
        }
        text.remove_prefix(length != 0 ? length : 1);
    }
    line += '"';
}

// The number of seconds in a duration, H:MM:SS.
static std::uint64_t secondsOf(std::string_view duration) {
    std::uint64_t total = 0;
    std::uint64_t part = 0;
    for (const char c : duration) {
        if (c == ':')
            total = (total + std::exchange(part, 0)) * 60;
        else
            part = part * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return total + part;
}

// JSON has only finite numbers.
static bool isFinite(std::string_view real) {
    return !real.ends_with("inf") && !real.ends_with("nan");
}

// Appends a value in the JSON form of its kind; null for an empty value that is not text.
static void appendTyped(std::string &line, std::string_view text, ALA_valueKind_t kind) {
    if (text.empty() && kind != ALA_KIND_TEXT)
        line += "null";
    else if (kind == ALA_KIND_INTEGER || kind == ALA_KIND_BOOLEAN ||
             (kind == ALA_KIND_REAL && isFinite(text)))
        line += text;
    else if (kind == ALA_KIND_DURATION)
        line += std::to_string(secondsOf(text));
    else
        appendText(line, text);
}

static void appendAttribute(std::string &line, const ALA_attrPair &pair, bool isTyped) {
    ALA_valueKind_t kind = ALA_KIND_TEXT;
    std::uint32_t valueType = 0;
    if (isTyped)
        ALA_GetAttributeType(&pair, &valueType, &kind);
    if (line.back() != '{')
        line += ',';
    appendText(line, pair.attrName);
    char separator = '[';
    line += ':';
    for (const attributeVal *value = pair.attrVal; value != nullptr; value = value->next) {
        line += separator;
        appendTyped(line, value->value, kind);
        separator = ',';
    }
    line += ']';
}

// ---- Owners ----

namespace {

struct Deleter {
    void operator()(ALA_attrPair *pair) const { ALA_FreeAttributePair(&pair); }
    void operator()(record *jobRecord) const { ALA_FreeJobRecord(&jobRecord); }
    void operator()(docRecord *document) const { ALA_FreeDocmtRecord(&document); }
};
template <class Thing>
using Owned = std::unique_ptr<Thing, Deleter>;

} // namespace

// ---- Records ----

// Appends the attributes that first() and next() return, as an object.  Returns the code that ended
// the loop.
template <class Record, class First, class Next>
static ALA_retCode_t appendAttributes(std::string &line, ALA_handle_t handle, Record record, bool isTyped,
                                      First first, Next next) {
    line += '{';
    ALA_attrPair *read = nullptr;
    ALA_retCode_t result = first(handle, &record, nullptr, &read);
    Owned<ALA_attrPair> pair(read);
    while (result == ALA_N_NORMAL) {
        appendAttribute(line, *pair, isTyped);
        result = next(handle, &record, nullptr, &read);
        pair.reset(read);
    }
    line += '}';
    return result;
}

// Appends the documents of a record, as an array.  False if a document could not be read.
static bool appendDocuments(std::string &line, ALA_handle_t handle, ALA_record_t record, bool isTyped) {
    bool complete = true;
    line += '[';
    ALA_dRecord_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstDocmt(handle, &record, &read);
    Owned<docRecord> document(read);
    while (result == ALA_N_NORMAL && document != nullptr) {
        if (line.back() != '[')
            line += ',';
        complete = appendAttributes(line, handle, document.get(), isTyped, ALA_GetFirstAttrFromDoc,
                                    ALA_GetNextAttrFromDoc) == ALA_A_LAST_ATTRIBUTE &&
                   complete;
        result = ALA_GetNextDocmt(handle, &record, &read);
        document.reset(read);
    }
    line += ']';
    return complete && (result == ALA_N_NORMAL || result == ALA_A_NO_MORE_DOCMT_ATTR);
}

// The beginning of a record's or a log's object: the members "server" and "log".
static std::string beginObject(const JsonLog &log) {
    std::string line = "{\"server\":";
    appendText(line, log.server);
    line += ",\"log\":";
    appendText(line, log.file);
    return line;
}

// Appends a record to `line`, which contains the beginning of the object.  If the record cannot be read to
// its end, the last member of the object is "incomplete".
static void appendRecord(std::string &line, ALA_handle_t handle, const JsonLog &log, ALA_record_t record,
                         JsonOutput &output) {
    line += ",\"date\":" + std::to_string(log.date) + ",\"attributes\":";
    const ALA_retCode_t ended =
        appendAttributes(line, handle, record, log.isTyped, ALA_GetFirstAttrFromJob, ALA_GetNextAttrFromJob);
    line += ",\"documents\":";
    bool complete = true;
    if (ended == ALA_A_NO_MORE_JOB_ATTR) {
        complete = appendDocuments(line, handle, record, log.isTyped);
    } else {
        line += "[]";
        complete = ended == ALA_A_LAST_ATTRIBUTE;
        if (!complete)
            output.recordFailed(ended);
    }
    line += complete ? "}\n" : ",\"incomplete\":true}\n";
}

static void writeEnd(const JsonLog &log, std::uint64_t records, bool isComplete, JsonOutput &output) {
    std::string line = beginObject(log);
    line += ",\"records\":" + std::to_string(records);
    line += isComplete ? ",\"complete\":true}\n" : ",\"complete\":false}\n";
    output.line(line);
}

void qvledger::writeJsonOfUnreadLog(const JsonLog &log, JsonOutput &output) {
    writeEnd(log, 0, false, output);
}

void qvledger::writeJsonOfIncompleteServer(const char *server, JsonOutput &output) {
    std::string line = "{\"server\":";
    appendText(line, server);
    line += ",\"complete\":false}\n";
    output.line(line);
}

ALA_retCode_t qvledger::writeJsonLines(ALA_handle_t handle, ALA_acctLogHandle_t openLog, const JsonLog &log,
                                       JsonOutput &output, bool *isComplete) {
    if (log.isTyped)
        ALA_SetTimeForm(handle, ALA_TIME_ISO_8601);
    const std::string beginning = beginObject(log) + ",\"record\":";
    std::string line;
    std::uint64_t records = log.recordsBefore;
    ALA_record_t read = nullptr;
    ALA_retCode_t result = records == 0 ? ALA_GetFirstJobRecord(handle, &openLog, &read)
                                        : ALA_GetNextJobRecord(handle, &openLog, &read);
    Owned<record> current(read);
    while (result == ALA_N_NORMAL) {
        line = beginning + std::to_string(++records);
        appendRecord(line, handle, log, current.get(), output);
        output.line(line);
        if (!output.recordWritten(current.get()))
            break;
        result = ALA_GetNextJobRecord(handle, &openLog, &read);
        current.reset(read);
    }
    *isComplete = result == ALA_A_LAST_ATTRIBUTE && ALA_ReadError(openLog) == 0;
    if (!*isComplete || !log.isCompleteBefore || records != log.recordsBefore)
        writeEnd(log, records, *isComplete, output);
    return result;
}
