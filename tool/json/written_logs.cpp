#include "tool/json/written_logs.h"

#include <array>
#include <charconv>
#include <utility>

using namespace qvledger;

static constexpr std::string_view kFirstLine = "qvledger-json state 1";

void WrittenLog::addRecord(ALA_acctLogHandle_t log, ALA_record_t record) {
    end = nextRecordOffset(log);
    lastBegin = end - attributesSize(record);
    if (records++ == 0) {
        firstBegin = lastBegin;
        firstEnd = end;
        // If the header cannot be read, no log has this checksum, and the next run writes the records again.
        firstChecksum = kNoBytes;
        static_cast<void>(addToChecksum(log, 0, firstBegin, &firstChecksum));
        addToChecksum(record, &firstChecksum);
    }
    checksum = firstChecksum;
    addToChecksum(record, &checksum);
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
    std::array<std::string_view, 10> fields;
    for (std::string_view &field : fields) {
        const std::size_t length = line.find('\t');
        field = line.substr(0, length);
        line.remove_prefix(field.size());
        if (&field != &fields.back() ? line.empty() : !line.empty())
            return false;
        line.remove_prefix(line.empty() ? 0 : 1);
    }
    int complete = 0;
    const auto &[server, file, date, records, isComplete, firstBegin, firstEnd, lastBegin, end, checksum] =
        fields;
    if (!decode(server, &log->server) || !decode(file, &log->file) || !readNumber(date, &log->date) ||
        !readNumber(records, &log->records) || !readNumber(isComplete, &complete) ||
        !readNumber(firstBegin, &log->firstBegin) || !readNumber(firstEnd, &log->firstEnd) ||
        !readNumber(lastBegin, &log->lastBegin) || !readNumber(end, &log->end) ||
        !readNumber(checksum, &log->checksum, 16))
        return false;
    log->isComplete = complete == 1;
    return log->date >= 0 && log->records > 0 && (complete == 0 || complete == 1) && log->firstBegin > 0 &&
           log->firstBegin < log->firstEnd && log->firstBegin <= log->lastBegin && log->lastBegin < log->end;
}

std::size_t WrittenLogs::read(std::string_view text) {
    logs_.clear();
    for (std::size_t number = 1; number == 1 || !text.empty(); ++number) {
        const std::size_t length = text.find('\n');
        if (length == text.npos)
            return number;
        const std::string_view line = text.substr(0, length);
        WrittenLog log;
        if (number == 1 ? line != kFirstLine : !readLine(line, &log))
            return number;
        if (number != 1)
            add(std::move(log));
        text.remove_prefix(length + 1);
    }
    return 0;
}

std::string WrittenLogs::text() const {
    std::string text(kFirstLine);
    text += '\n';
    for (const auto &[server, log] : logs_) {
        std::array<char, 17> checksum = {};
        std::to_chars(checksum.data(), checksum.data() + checksum.size() - 1, log.checksum, 16);
        text += encoded(server) + '\t' + encoded(log.file);
        for (const std::int64_t number :
             {std::int64_t{log.date}, static_cast<std::int64_t>(log.records), std::int64_t{log.isComplete},
              log.firstBegin, log.firstEnd, log.lastBegin, log.end})
            text += '\t' + std::to_string(number);
        text += '\t' + std::string(checksum.data()) + '\n';
    }
    return text;
}

// ---- Logs ----

// Is the open log the written one?  Sets its checksum `firstChecksum`.
static bool isSameLog(ALA_acctLogHandle_t log, WrittenLog &written) {
    written.firstChecksum = kNoBytes;
    if (!addToChecksum(log, 0, written.firstBegin, &written.firstChecksum) ||
        !addToChecksum(log, written.firstBegin, written.firstEnd, &written.firstChecksum))
        return false;
    std::uint64_t checksum = written.firstChecksum;
    return addToChecksum(log, written.lastBegin, written.end, &checksum) && checksum == written.checksum;
}

std::optional<WrittenLog> WrittenLogs::take(ALA_acctLogHandle_t log, const LogName &name) {
    const auto [first, last] = logs_.equal_range(name.server);
    auto found = last;
    for (auto entry = first; entry != last; ++entry) {
        WrittenLog &written = entry->second;
        if ((written.date == name.date || written.file.ends_with(".current")) &&
            (found == last || written.records > found->second.records) && isSameLog(log, written))
            found = entry;
    }
    if (found == last)
        return std::nullopt;
    WrittenLog taken = std::move(found->second);
    logs_.erase(found);
    taken.file = name.file;
    taken.date = name.date;
    return taken;
}

void WrittenLogs::add(WrittenLog written) {
    if (written.records != 0)
        logs_.emplace(written.server, std::move(written));
}
