#include "platform/posix/line_scanner.h"

#include <algorithm>
#include <charconv>

using namespace qvledger;

constexpr std::string_view kBlanks = " \t";

LineScanner::LineScanner(std::string_view line) : rest(line) {
    if (rest.ends_with('\r'))
        rest.remove_suffix(1);
    rest = rest.substr(0, rest.find_last_not_of(kBlanks) + 1);
}

void LineScanner::skipBlanks() {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
}

bool LineScanner::atEnd() const {
    const std::size_t first = rest.find_first_not_of(kBlanks);
    return first == std::string_view::npos || rest[first] == ';';
}

bool LineScanner::take(char character) {
    return take(std::string_view(&character, 1));
}

bool LineScanner::take(std::string_view word) {
    if (!rest.starts_with(word))
        return false;
    rest.remove_prefix(word.size());
    return true;
}

std::optional<std::string_view> LineScanner::takeToBracket() {
    for (std::size_t i = rest.find(']'); i != std::string_view::npos; i = rest.find(']', i + 1)) {
        LineScanner behind;
        behind.rest = rest.substr(i + 1);
        if (behind.atEnd()) {
            const std::string_view taken = rest.substr(0, i);
            *this = behind;
            return taken;
        }
    }
    return std::nullopt;
}

bool LineScanner::takeQuoted(std::string &text) {
    if (!rest.starts_with('"'))
        return false;
    std::string taken;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == '"') {
            text = std::move(taken);
            rest.remove_prefix(i + 1);
            return true;
        }
        if (rest[i] == '\\' && (++i == rest.size() || (rest[i] != '\\' && rest[i] != '"')))
            return false;
        taken.push_back(rest[i]);
    }
    return false;
}

std::optional<DWORD> LineScanner::takeHex(std::size_t fewest, std::size_t most) {
    DWORD number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number, 16);
    const auto digits = static_cast<std::size_t>(end - rest.data());
    if (error != std::errc() || digits < fewest || digits > most)
        return std::nullopt;
    rest.remove_prefix(digits);
    return number;
}

bool LineScanner::takeContinuation() {
    return rest == "\\" && take('\\');
}
