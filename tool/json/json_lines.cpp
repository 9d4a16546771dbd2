// An example of a program on the Accounting Log Access facility: for the logs it takes nothing but ala/ala.h.
#include "json_lines.h"

#include <memory>
#include <string>
#include <string_view>

// ---- JSON ----

// Bytes of the UTF-8 character that the text begins with; 0 if it begins with none.
static std::size_t utf8Length(std::string_view in_text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(in_text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || in_text.size() < length)
        return 0;
    for (std::size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80)
            return 0;
    // Neither in more bytes than needed, nor half of a surrogate pair, nor beyond U+10FFFF.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 0;
    return length;
}

static void appendControl(std::string &inoutp_line, unsigned char in_byte) {
    constexpr std::string_view named = "\b\f\n\r\t";
    constexpr std::string_view letters = "bfnrt";
    constexpr std::string_view digits = "0123456789abcdef";
    inoutp_line += '\\';
    if (const std::size_t at = named.find(static_cast<char>(in_byte)); at != named.npos) {
        inoutp_line += letters[at];
        return;
    }
    inoutp_line += "u00";
    inoutp_line += digits[in_byte >> 4];
    inoutp_line += digits[in_byte & 15];
}

// A text in quotes.  Each byte that belongs to no character becomes U+FFFD.
static void appendText(std::string &inoutp_line, std::string_view in_text) {
    inoutp_line += '"';
    while (!in_text.empty()) {
        const std::size_t length = utf8Length(in_text);
        const auto first = static_cast<unsigned char>(in_text[0]);
        if (length == 0) {
            inoutp_line += "\xEF\xBF\xBD";
        } else if (first < 0x20) {
            appendControl(inoutp_line, first);
        } else {
            if (first == '"' || first == '\\')
                inoutp_line += '\\';
            inoutp_line.append(in_text.substr(0, length));
        }
        in_text.remove_prefix(length != 0 ? length : 1);
    }
    inoutp_line += '"';
}

static void appendAttribute(std::string &inoutp_line, const ALA_attrPair &in_pair) {
    if (inoutp_line.back() != '{')
        inoutp_line += ',';
    appendText(inoutp_line, in_pair.attrName);
    char separator = '[';
    inoutp_line += ':';
    for (const attributeVal *value = in_pair.attrVal; value != nullptr; value = value->next) {
        inoutp_line += separator;
        appendText(inoutp_line, value->value);
        separator = ',';
    }
    inoutp_line += ']';
}

// ---- Owners ----

namespace {

struct Giver {
    void operator()(ALA_attrPair *inp_pair) const { ALA_FreeAttributePair(&inp_pair); }
    void operator()(record *inp_record) const { ALA_FreeJobRecord(&inp_record); }
    void operator()(docRecord *inp_document) const { ALA_FreeDocmtRecord(&inp_document); }
};
template <class Thing>
using Owned = std::unique_ptr<Thing, Giver>;

} // namespace

// ---- Records ----

// Appends the attributes that a pair of cursor operations gives, as an object.  The code that ended them.
template <class Record, class First, class Next>
static ALA_retCode_t appendAttributes(std::string &inoutp_line, ALA_handle_t in_handle, Record in_record,
                                      First in_first, Next in_next) {
    inoutp_line += '{';
    ALA_attrPair *read = nullptr;
    ALA_retCode_t result = in_first(in_handle, &in_record, nullptr, &read);
    Owned<ALA_attrPair> pair(read);
    while (result == ALA_N_NORMAL) {
        appendAttribute(inoutp_line, *pair);
        result = in_next(in_handle, &in_record, nullptr, &read);
        pair.reset(read);
    }
    inoutp_line += '}';
    return result;
}

// Appends the documents of a record, as an array.  False when not all of them could be delivered.
static bool appendDocuments(std::string &inoutp_line, ALA_handle_t in_handle, ALA_record_t in_record) {
    bool complete = true;
    inoutp_line += '[';
    ALA_dRecord_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstDocmt(in_handle, &in_record, &read);
    Owned<docRecord> document(read);
    while (result == ALA_N_NORMAL && document != nullptr) {
        if (inoutp_line.back() != '[')
            inoutp_line += ',';
        complete = appendAttributes(inoutp_line, in_handle, document.get(), ALA_GetFirstAttrFromDoc,
                                    ALA_GetNextAttrFromDoc) == ALA_A_LAST_ATTRIBUTE &&
                   complete;
        result = ALA_GetNextDocmt(in_handle, &in_record, &read);
        document.reset(read);
    }
    inoutp_line += ']';
    return complete && (result == ALA_N_NORMAL || result == ALA_A_NO_MORE_DOCMT_ATTR);
}

// One line.  What a failure cut off is missing, and the line says so in its last member.
static void makeLine(std::string &outp_line, ALA_handle_t in_handle, std::int32_t in_date,
                     ALA_record_t in_record, JsonEvents &inoutp_events) {
    outp_line = "{\"date\":" + std::to_string(in_date) + ",\"attributes\":";
    const ALA_retCode_t ended =
        appendAttributes(outp_line, in_handle, in_record, ALA_GetFirstAttrFromJob, ALA_GetNextAttrFromJob);
    outp_line += ",\"documents\":";
    bool complete = true;
    if (ended == ALA_A_NO_MORE_JOB_ATTR) {
        complete = appendDocuments(outp_line, in_handle, in_record);
    } else {
        outp_line += "[]";
        complete = ended == ALA_A_LAST_ATTRIBUTE;
        if (!complete)
            inoutp_events.recordFailed(ended);
    }
    outp_line += complete ? "}\n" : ",\"incomplete\":true}\n";
}

ALA_retCode_t writeJsonLines(ALA_handle_t in_handle, ALA_acctLogHandle_t in_log, std::int32_t in_date,
                             std::FILE *inp_stream, JsonEvents &inoutp_events) {
    std::string line;
    ALA_record_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstJobRecord(in_handle, &in_log, &read);
    Owned<record> current(read);
    while (result == ALA_N_NORMAL) {
        makeLine(line, in_handle, in_date, current.get(), inoutp_events);
        std::fwrite(line.data(), 1, line.size(), inp_stream);
        if (!inoutp_events.recordWritten())
            return ALA_N_NORMAL;
        result = ALA_GetNextJobRecord(in_handle, &in_log, &read);
        current.reset(read);
    }
    return result;
}
