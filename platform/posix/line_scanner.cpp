#include "platform/posix/line_scanner.h"

#include <algorithm>
#include <charconv>

using namespace qvledger;

constexpr std::string_view kBlanks = " \t";

LineScanner::LineScanner(std::string_view line) : rest_(line) {
    if (rest_.ends_with('\r'))
        rest_.remove_suffix(1);
    rest_ = rest_.substr(0, rest_.find_last_not_of(kBlanks) + 1);
}

void LineScanner::skipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
}

bool LineScanner::atEnd() const {
    const std::size_t first = rest_.find_first_not_of(kBlanks);
    return first == std::string_view::npos || rest_[first] == ';';
}

bool LineScanner::take(char character) {
    return take(std::string_view(&character, 1));
}

bool LineScanner::take(std::string_view word) {
    if (!rest_.starts_with(word))
        return false;
    rest_.remove_prefix(word.size());
    return true;
}

std::optional<std::string_view> LineScanner::takeToBracket() {
    for (std::size_t i = rest_.find(']'); i != std::string_view::npos; i = rest_.find(']', i + 1)) {
        LineScanner after;
        after.rest_ = rest_.substr(i + 1);
        if (after.atEnd()) {
            const std::string_view taken = rest_.substr(0, i);
            *this = after;
            return taken;
        }
    }
    return std::nullopt;
}

bool LineScanner::takeQuoted(std::string &text) {
    if (!rest_.starts_with('"'))
        return false;
    std::string taken;
    for (std::size_t i = 1; i < rest_.size(); ++i) {
        if (rest_[i] == '"') {
            text = std::move(taken);
            rest_.remove_prefix(i + 1);
            return true;
        }
        if (rest_[i] == '\\' && (++i == rest_.size() || (rest_[i] != '\\' && rest_[i] != '"')))
            return false;
        taken.push_back(rest_[i]);
    }
    return false;
}

std::optional<DWORD> LineScanner::takeHex(std::size_t fewest, std::size_t most) {
    DWORD number = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number, 16);
    const auto digits = static_cast<std::size_t>(end - rest_.data());
    if (error != std::errc() || digits < fewest || digits > most)
        return std::nullopt;
    rest_.remove_prefix(digits);
    return number;
}

bool LineScanner::takeContinuation() {
    return rest_ == "\\" && take('\\');
}
