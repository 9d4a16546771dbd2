// Scanner for one line of a registry file.  The take operations remove a piece from the front; if the piece
// is not there, they fail and leave the line unchanged.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/os.h"

namespace qvledger {

class LineScanner {
public:
    LineScanner() = default;
    explicit LineScanner(std::string_view line);

    std::string_view all() const { return rest_; }
    void skipBlanks();
    // Are only spaces, tabs and a comment left?
    bool atEnd() const;
    bool take(char character);
    bool take(std::string_view word);
    // The text up to a key's closing bracket, which must end the line: names of keys may contain brackets.
    std::optional<std::string_view> takeToBracket();
    // A quoted text, with its escapes resolved.
    bool takeQuoted(std::string &text);
    std::optional<DWORD> takeHex(std::size_t fewest, std::size_t most);
    bool takeContinuation();

private:
    std::string_view rest_;
};

} // namespace qvledger
