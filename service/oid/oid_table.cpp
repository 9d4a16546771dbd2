#include "service/oid/oid_table.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "platform/descriptor.h"
#include "platform/utf8.h"
#include "service/log/log.h"
#include "service/system.h"

using namespace qvledger;

constexpr std::int64_t kMaxFileSize = 1 << 30; // bytes; all positions then fit in 32 bits
constexpr std::size_t kBlockSize = 65536;      // bytes
constexpr std::size_t kFirstSlots = 64;        // the number of slots is always a power of two
constexpr std::size_t kMaxNameLength = OID_NAME_SIZE - 1;

// ---- Lines of a file ----

namespace {

class LineReader {
public:
    explicit LineReader(int fd) : fd_(fd), buffer_(kBlockSize) {}

    // Gets the next line without its line end; false after the last line and after a failed read.
    bool next(std::string_view *line) {
        std::size_t length = rest().find('\n');
        while (length == rest().npos && refill())
            length = rest().find('\n');
        if (failed_ || rest().empty())
            return false;
        *line = rest().substr(0, length);
        begin_ = length == rest().npos ? end_ : begin_ + length + 1;
        if (line->ends_with('\r'))
            line->remove_suffix(1);
        return true;
    }

    const char *failure() const { return failed_ ? std::strerror(reason_) : nullptr; }

private:
    std::string_view rest() const { return {buffer_.data() + begin_, end_ - begin_}; }

    // Moves the unread bytes to the buffer's start and reads more bytes after them; false at the end of the
    // file and on failure.
    bool refill() {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        if (end_ == buffer_.size())
            buffer_.resize(2 * end_);
        const int count = _read(fd_, buffer_.data() + end_, static_cast<unsigned>(buffer_.size() - end_));
        total_ += count;
        if (count < 0 || total_ > kMaxFileSize) {
            reason_ = count < 0 ? errno : EFBIG;
            failed_ = true;
        }
        end_ += count > 0 ? static_cast<std::size_t>(count) : 0;
        return count > 0 && !failed_;
    }

    int fd_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::int64_t total_ = 0;
    bool failed_ = false;
    int reason_ = 0;
};

} // namespace

// ---- One line ----

template <class Number>
static bool parseNumber(std::string_view text, int base, Number *number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number, base);
    return error == std::errc() && end == text.data() + text.size();
}

// Splits a line at each tab; false unless the line has exactly fields.size() fields.
static bool split(std::string_view line, std::span<std::string_view> fields) {
    for (std::size_t at = 0; at < fields.size(); ++at) {
        const std::size_t tab = line.find('\t');
        const bool last = at + 1 == fields.size();
        if (last != (tab == line.npos))
            return false;
        fields[at] = line.substr(0, tab);
        line.remove_prefix(last ? line.size() : tab + 1);
    }
    return true;
}

static bool isName(std::string_view text) {
    return !text.empty() && text.size() <= kMaxNameLength && text.find('\0') == text.npos && isUtf8(text);
}

// Parses a line.  Returns null, or the reason why the line is malformed.
static const char *parseLine(std::string_view text, OidTable::Kind kind, OidLine *line) {
    std::array<std::string_view, 4> fields;
    const std::size_t count = kind == OidTable::Kind::Identifiers ? fields.size() : 2;
    if (!split(text, std::span(fields).first(count)))
        return "wrong number of fields";
    if (!parseOid(fields[0], &line->binary))
        return "no object identifier";
    line->name = fields[count - 1];
    if (!isName(line->name))
        return "no name of 1 to 255 bytes of UTF-8";
    if (kind == OidTable::Kind::Names)
        return nullptr;
    if (!parseNumber(fields[1], 10, &line->identifier))
        return "no short identifier";
    if (fields[2].size() != 2 || !parseNumber(fields[2], 16, &line->classNumber))
        return "no class of two hexadecimal digits";
    return nullptr;
}

// ---- Hash tables ----

static std::size_t hashOf(std::span<const std::uint8_t> contents) {
    std::uint64_t hash = 0xcbf29ce484222325U; // FNV-1a
    for (const std::uint8_t byte : contents)
        hash = (hash ^ byte) * 0x100000001b3U;
    return hash ^ hash >> 32;
}

static std::size_t hashOf(std::uint32_t identifier) {
    return (identifier * 0x9e3779b97f4a7c15U) >> 32; // spreads consecutive identifiers
}

// Returns the index of the slot with the wanted entry, or of the free slot where the entry belongs.  There is
// always a free slot.
template <class Slots, class IsWanted>
static std::size_t probe(const Slots &slots, std::size_t hash, IsWanted isWanted) {
    const std::size_t mask = slots.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        if (slots[at] == 0 || isWanted(slots[at] - 1))
            return at;
    }
}

std::size_t OidTable::slotOf(std::span<const std::uint8_t> identifier) const {
    return probe(byContents_, hashOf(identifier), [&](std::uint32_t index) {
        return std::ranges::equal(contents(entries_[index]), identifier);
    });
}

std::size_t OidTable::slotOf(std::uint32_t identifier) const {
    return probe(byIdentifier_, hashOf(identifier),
                 [&](std::uint32_t index) { return entries_[index].identifier == identifier; });
}

const OidEntry *OidTable::find(std::span<const std::uint8_t> contents) const {
    const std::uint32_t number = entries_.empty() ? 0 : byContents_[slotOf(contents)];
    return number != 0 ? &entries_[number - 1] : nullptr;
}

const OidEntry *OidTable::findShort(std::uint32_t identifier) const {
    const std::uint32_t number = entries_.empty() ? 0 : byIdentifier_[slotOf(identifier)];
    return number != 0 ? &entries_[number - 1] : nullptr;
}

// Doubles the hash tables if one more entry would make them more than half full.
void OidTable::makeRoomForOne() {
    if (2 * (entries_.size() + 1) <= byContents_.size())
        return;
    const std::size_t size = std::max(kFirstSlots, 2 * byContents_.size());
    byContents_.assign(size, 0);
    byIdentifier_.assign(size, 0);
    for (std::uint32_t number = 1; number <= entries_.size(); ++number) {
        const OidEntry &entry = entries_[number - 1];
        byContents_[slotOf(contents(entry))] = number;
        if (entry.identifier != 0)
            byIdentifier_[slotOf(entry.identifier)] = number;
    }
}

// ---- Reading a table ----

// Adds a line's entry.  Returns null, or the reason why the line is refused.
const char *OidTable::add(const OidLine &line) {
    makeRoomForOne();
    const std::span binary(line.binary.bytes, 1U + line.binary.bytes[0]);
    std::uint32_t &contentsSlot = byContents_[slotOf(binary.subspan(1))];
    if (contentsSlot != 0)
        return "object identifier given twice";
    const auto number = static_cast<std::uint32_t>(entries_.size() + 1);
    if (line.identifier != 0) {
        std::uint32_t &identifierSlot = byIdentifier_[slotOf(line.identifier)];
        if (identifierSlot != 0)
            return "short identifier given twice";
        identifierSlot = number;
    }
    contentsSlot = number;
    entries_.push_back({static_cast<std::uint32_t>(bytes_.size()), line.identifier, line.classNumber});
    bytes_.insert(bytes_.end(), binary.begin(), binary.end());
    bytes_.push_back(static_cast<std::uint8_t>(line.name.size()));
    bytes_.insert(bytes_.end(), line.name.begin(), line.name.end());
    return nullptr;
}

static bool isBlankOrComment(std::string_view line) {
    return line.starts_with('#') || line.find_first_not_of(" \t") == line.npos;
}

bool OidTable::readLines(int fd, const char *path, Kind kind) {
    LineReader reader(fd);
    std::string_view text;
    for (unsigned number = 1; reader.next(&text); ++number) {
        if (isBlankOrComment(text))
            continue;
        OidLine line;
        const char *fault = parseLine(text, kind, &line);
        if (fault == nullptr)
            fault = add(line);
        if (fault != nullptr) {
            trouble_ = std::string(path) + ":" + std::to_string(number) + ": " + fault;
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s", trouble_.c_str());
            return false;
        }
    }
    if (reader.failure() != nullptr) {
        trouble_ = std::string(path) + ": cannot be read: " + reader.failure();
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s", trouble_.c_str());
    }
    return reader.failure() == nullptr;
}

OidTable::State OidTable::load(const char *path, Kind kind) {
    const Descriptor file(SYSU_Open(path, 0));
    if (file.get() < 0) {
        if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG)
            return State::Absent;
        trouble_ = std::string(path) + ": cannot be opened: " + std::strerror(errno);
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s", trouble_.c_str());
        return State::Bad;
    }
    OS_fileIdentity info = {};
    if (OS_IdentifyDescriptor(file.get(), &info) != 0 || !info.regular || info.size > kMaxFileSize) {
        trouble_ = std::string(path) + ": no file of at most 1 GiB";
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s", trouble_.c_str());
        return State::Bad;
    }
    // An entry never takes more bytes than its line, so the file's size suffices for all entries.
    bytes_.reserve(static_cast<std::size_t>(info.size));
    return readLines(file.get(), path, kind) ? State::Loaded : State::Bad;
}
