// Escapes control characters in texts from files and command lines, so that the texts cannot control a
// terminal or begin a new line.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace qvledger {

// Length in bytes of the control character at a position (ASCII, or U+0080 to U+009F in UTF-8); 0 for any
// other character.
inline std::size_t controlAt(std::string_view text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7f)
        return 1;
    const bool isC1 =
        byte == 0xC2 && at + 1 < text.size() && (static_cast<unsigned char>(text[at + 1]) & 0xE0) == 0x80;
    return isC1 ? 2 : 0;
}

// Calls append for each piece of the text, and with "\xNN" for each byte of a control character.
template <class Append>
void escapeControls(std::string_view text, Append append) {
    std::size_t shown = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t length = controlAt(text, at);
        if (length == 0)
            continue;
        append(text.substr(shown, at - shown));
        for (shown = at + length; at < shown; ++at) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(text[at]));
            append(std::string_view(escape));
        }
        --at;
    }
    append(text.substr(shown));
}

} // namespace qvledger
