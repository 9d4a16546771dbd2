// One line of a registry file, taken piece by piece.  A piece that is not there leaves the line as it is.
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
    // Only blanks and a comment are left.
    bool atEnd() const;
    bool take(char character);
    bool take(std::string_view word);
    // Up to the closing bracket of a key, which ends the line; names of keys may hold brackets of their own.
    std::optional<std::string_view> takeToBracket();
    // A text in quotation marks, without its escapes.
    bool takeQuoted(std::string &text);
    std::optional<DWORD> takeHex(std::size_t fewest, std::size_t most);
    bool takeContinuation();

private:
    std::string_view rest_;
};

} // namespace qvledger
