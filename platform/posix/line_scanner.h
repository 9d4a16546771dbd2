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
    // Takes a key's name and its closing bracket.  Names may contain brackets, so the closing bracket is the
    // first bracket after which the line has at most a comment.
    std::optional<std::string_view> takeToBracket();
    // Takes a quoted text and resolves its escapes.
    bool takeQuoted(std::string &text);
    // Takes a number of `fewest` to `most` hexadecimal digits.
    std::optional<DWORD> takeHex(std::size_t fewest, std::size_t most);
    // Takes the backslash that continues the line.
    bool takeContinuation();

private:
    std::string_view rest_;
};

} // namespace qvledger
