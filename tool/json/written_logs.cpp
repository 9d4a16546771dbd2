#include "tool/json/written_logs.h"

#include <array>
#include <charconv>
#include <utility>

using namespace qvledger;

static constexpr std::string_view kFirstLine = "qvledger-json state 1";

void WrittenLog::addRecord(ALA_acctLogHandle_t log) {
    place.lastBegin = place.end;
    place.end = nextRecordOffset(log);
    if (records++ == 0)
        place.firstEnd = place.end;
}

// ---- Text ----

// Names can have any characters, but a line and its fields cannot.
static std::string encoded(std::string_view name) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > ' ' && byte != '%' && byte != 0x7F)
            text += character;
        else
            text.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return text;
}

template <class Number>
static bool readNumber(std::string_view text, Number *number, int base = 10) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number, base);
    return error == std::errc() && end == text.data() + text.size();
}

static bool decode(std::string_view text, std::string *name) {
    for (; !text.empty(); text.remove_prefix(1)) {
        unsigned char byte = static_cast<unsigned char>(text[0]);
        if (byte == '%') {
            if (text.size() < 3 || !readNumber(text.substr(1, 2), &byte, 16))
                return false;
            text.remove_prefix(2);
        }
        *name += static_cast<char>(byte);
    }
    return true;
}

static bool readLine(std::string_view line, WrittenLog *log) {
    std::array<std::string_view, 9> fields;
    for (std::string_view &field : fields) {
        const std::size_t length = line.find('\t');
        field = line.substr(0, length);
        line.remove_prefix(field.size());
        if (&field != &fields.back() ? line.empty() : !line.empty())
            return false;
        line.remove_prefix(line.empty() ? 0 : 1);
    }
    int complete = 0;
    const auto &[server, file, date, records, isComplete, firstEnd, lastBegin, end, checksum] = fields;
    if (!decode(server, &log->server) || !decode(file, &log->file) || !readNumber(date, &log->date) ||
        !readNumber(records, &log->records) || !readNumber(isComplete, &complete) ||
        !readNumber(firstEnd, &log->place.firstEnd) || !readNumber(lastBegin, &log->place.lastBegin) ||
        !readNumber(end, &log->place.end) || !readNumber(checksum, &log->checksum, 16))
        return false;
    log->isComplete = complete != 0;
    const LogPlace &place = log->place;
    return log->records > 0 && place.firstEnd > 0 && place.lastBegin > 0 && place.firstEnd <= place.end &&
           place.lastBegin < place.end;
}

std::size_t WrittenLogs::read(std::string_view text) {
    logs_.clear();
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t length = text.find('\n');
        if (length == text.npos)
            return number;
        const std::string_view line = text.substr(0, length);
        if (number == 1 ? line != kFirstLine : !readLine(line, &logs_.emplace_back()))
            return number;
        text.remove_prefix(length + 1);
    }
    return 0;
}

std::string WrittenLogs::text() const {
    std::string text(kFirstLine);
    text += '\n';
    for (const WrittenLog &log : logs_) {
        std::array<char, 17> checksum = {};
        std::to_chars(checksum.data(), checksum.data() + checksum.size() - 1, log.checksum, 16);
        text += encoded(log.server) + '\t' + encoded(log.file);
        for (const std::int64_t number :
             {std::int64_t{log.date}, static_cast<std::int64_t>(log.records), std::int64_t{log.isComplete},
              log.place.firstEnd, log.place.lastBegin, log.place.end})
            text += '\t' + std::to_string(number);
        text += '\t' + std::string(checksum.data()) + '\n';
    }
    return text;
}

// ---- Logs ----

std::optional<WrittenLog> WrittenLogs::take(ALA_acctLogHandle_t log, const LogName &name) {
    auto found = logs_.end();
    for (auto written = logs_.begin(); written != logs_.end(); ++written) {
        const bool isCandidate = written->server == name.server &&
                                 (written->date == name.date || written->file.ends_with(".current"));
        std::uint64_t checksum = 0;
        if (isCandidate && (found == logs_.end() || written->records > found->records) &&
            checksumAt(log, written->place, &checksum) && checksum == written->checksum)
            found = written;
    }
    if (found == logs_.end())
        return std::nullopt;
    WrittenLog taken = std::move(*found);
    logs_.erase(found);
    taken.file = name.file;
    taken.date = name.date;
    return taken;
}

void WrittenLogs::add(WrittenLog written, ALA_acctLogHandle_t log) {
    if (written.records != 0 && checksumAt(log, written.place, &written.checksum))
        logs_.push_back(std::move(written));
}
