#include "platform/posix/registry_file.h"

#include <algorithm>
#include <utility>

#include "platform/posix/ascii_case.h"
#include "platform/posix/line_scanner.h"
#include "platform/utf8.h"

using namespace qvledger;

using namespace std::string_view_literals;

constexpr std::string_view kLocalMachine = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kOtherRoots[] = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_CONFIG",   "HKEY_CURRENT_USER",
                                            "HKEY_DYN_DATA",     "HKEY_PERFORMANCE_DATA", "HKEY_USERS"};

constexpr const char *kBadHeader = "no registry header";
constexpr const char *kBadLine = "malformed line";
constexpr const char *kBadComment = "a comment begins with ;";
constexpr const char *kBadKey = "malformed key";
constexpr const char *kBadValue = "malformed value";
constexpr const char *kNoKey = "value outside a key";

static std::string lowered(std::string_view mixed) {
    std::string name(mixed);
    std::transform(name.begin(), name.end(), name.begin(), asciiLower);
    return name;
}

void RegistryKey::set(RegistryValue value) {
    const auto [place, isNew] = places_.try_emplace(lowered(value.name), values_.size());
    if (isNew) {
        values_.push_back(std::move(value));
    } else {
        values_[place->second].type = value.type;
        values_[place->second].data = std::move(value.data);
    }
}

const RegistryValue *RegistryKey::find(std::string_view name) const {
    const auto place = places_.find(lowered(name));
    return place != places_.end() ? &values_[place->second] : nullptr;
}

RegistryKey &Registry::make(std::string_view path) {
    return keys_[lowered(path)];
}

std::optional<RegistryKey> Registry::take(std::string_view keyPath) {
    if (keyPath.ends_with('\\'))
        keyPath.remove_suffix(1); // a final backslash has no meaning
    std::string path = lowered(keyPath);
    if (auto found = keys_.extract(path); !found.empty())
        return std::move(found.mapped());
    if (path.empty())
        return keys_.empty() ? std::nullopt : std::optional(RegistryKey());
    path += '\\';
    const auto below = keys_.lower_bound(path);
    return below != keys_.end() && below->first.starts_with(path) ? std::optional(RegistryKey())
                                                                  : std::nullopt;
}

namespace {

class Parser {
public:
    Parser(std::string_view text, Registry &registry) : text_(text), registry_(registry) {}

    std::optional<RegistryFault> parse();

private:
    bool nextLine();
    const char *header();
    const char *statement();
    const char *section();
    const char *value();
    bool data(RegistryValue &value);
    bool number(std::string &data);
    bool hexData(RegistryValue &value);
    bool hexBytes(std::string &data);
    bool joinContinued();

    std::string_view text_; // the text after the current line
    std::size_t lineNumber_ = 0;
    LineScanner line_;
    Registry &registry_;
    bool wideTexts_ = false;     // hexadecimal texts are UTF-16
    bool inSection_ = false;     // a line with a key was read
    RegistryKey *key_ = nullptr; // current key; null before the first key and outside HKEY_LOCAL_MACHINE
};

} // namespace

std::optional<RegistryFault> Parser::parse() {
    nextLine();
    const char *fault = header();
    while (fault == nullptr && nextLine())
        fault = statement();
    return fault != nullptr ? std::optional(RegistryFault{std::max<std::size_t>(lineNumber_, 1), fault})
                            : std::nullopt;
}

bool Parser::nextLine() {
    if (text_.empty())
        return false;
    const std::size_t end = std::min(text_.find('\n'), text_.size());
    line_ = LineScanner(text_.substr(0, end));
    text_.remove_prefix(std::min(end + 1, text_.size()));
    ++lineNumber_;
    return true;
}

const char *Parser::header() {
    wideTexts_ = line_.all() == "Windows Registry Editor Version 5.00";
    return wideTexts_ || line_.all() == "REGEDIT4" ? nullptr : kBadHeader;
}

const char *Parser::statement() {
    if (line_.all().find('\0') != std::string_view::npos)
        return kBadLine; // a NUL would end the names and texts that the calls return
    line_.skipBlanks();
    if (line_.atEnd())
        return nullptr;
    if (line_.take('['))
        return section();
    return line_.take('#') ? kBadComment : value();
}

const char *Parser::section() {
    const std::optional<std::string_view> bracketed = line_.takeToBracket();
    if (!bracketed)
        return kBadKey;
    const std::size_t rootEnd = std::min(bracketed->find('\\'), bracketed->size());
    const std::string root = lowered(bracketed->substr(0, rootEnd));
    const std::string_view path = bracketed->substr(std::min(rootEnd + 1, bracketed->size()));
    const bool hasEmptyName = bracketed->ends_with('\\') || bracketed->find("\\\\") != std::string_view::npos;
    const bool isOurs = root == lowered(kLocalMachine);
    const auto isRoot = [&](std::string_view wanted) { return root == lowered(wanted); };
    if (hasEmptyName || (!isOurs && std::none_of(std::begin(kOtherRoots), std::end(kOtherRoots), isRoot)))
        return kBadKey;
    inSection_ = true;
    key_ = isOurs ? &registry_.make(path) : nullptr;
    if (isOurs && key_->line == 0)
        key_->line = lineNumber_;
    return nullptr;
}

const char *Parser::value() {
    RegistryValue parsed = {"", REG_SZ, ""};
    if (!line_.take('@') && !line_.takeQuoted(parsed.name))
        return kBadLine;
    line_.skipBlanks();
    if (!line_.take('='))
        return kBadLine;
    line_.skipBlanks();
    if (!data(parsed) || !line_.atEnd())
        return kBadValue;
    if (!inSection_)
        return kNoKey;
    if (key_ != nullptr)
        key_->set(std::move(parsed));
    return nullptr;
}

bool Parser::data(RegistryValue &value) {
    if (line_.takeQuoted(value.data)) {
        value.data.push_back('\0');
        return true;
    }
    if (line_.take("dword:")) {
        value.type = REG_DWORD;
        return number(value.data);
    }
    return hexData(value);
}

bool Parser::number(std::string &data) {
    const std::optional<DWORD> read = line_.takeHex(1, 8);
    for (unsigned shift = 0; read && shift < 32; shift += 8)
        data.push_back(static_cast<char>(*read >> shift & 0xFF));
    return read.has_value();
}

bool Parser::hexData(RegistryValue &value) {
    value.type = REG_BINARY;
    if (line_.take("hex(")) {
        const std::optional<DWORD> type = line_.takeHex(1, 8);
        if (!type || !line_.take("):"))
            return false;
        value.type = *type;
    } else if (!line_.take("hex:")) {
        return false;
    }
    if (!hexBytes(value.data))
        return false;
    const bool isText = value.type == REG_SZ || value.type == REG_EXPAND_SZ || value.type == REG_MULTI_SZ;
    if (!isText || !wideTexts_)
        return true;
    if (value.data.size() % 2 != 0)
        return false;
    value.data = utf8FromUtf16(value.data, false);
    if (!value.data.ends_with('\0'))
        value.data.push_back('\0');
    return true;
}

// Reads bytes as pairs of digits separated by commas, also over continued lines; false if they are malformed.
bool Parser::hexBytes(std::string &data) {
    if (!joinContinued())
        return false;
    if (line_.atEnd())
        return true;
    do {
        if (!joinContinued())
            return false;
        const std::optional<DWORD> byte = line_.takeHex(2, 2);
        if (!byte || !joinContinued())
            return false;
        data.push_back(static_cast<char>(*byte));
    } while (line_.take(','));
    return true;
}

// Skips spaces and tabs, and continues with the next line if only a backslash is left of the current line.
// False if there is no line after the backslash.
bool Parser::joinContinued() {
    line_.skipBlanks();
    while (line_.takeContinuation()) {
        if (!nextLine())
            return false;
        line_.skipBlanks();
    }
    return true;
}

std::optional<RegistryFault> qvledger::parseRegistry(std::string_view bytes, Registry &registry) {
    if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv)) {
        const bool bigEndian = bytes[0] == '\xFE';
        std::string text = utf8FromUtf16(bytes.substr(2), bigEndian);
        if (bytes.size() % 2 != 0)
            text.push_back('\0'); // half a character: the NUL makes the last line malformed
        return Parser(text, registry).parse();
    }
    if (bytes.starts_with("\xEF\xBB\xBF"sv))
        bytes.remove_prefix(3);
    return Parser(bytes, registry).parse();
}
