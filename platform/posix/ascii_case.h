// Converts the case of ASCII letters independent of the locale, because the comparison of names must not
// depend on the language.
#pragma once

namespace qvledger {

constexpr char asciiLower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

constexpr char asciiUpper(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - ('a' - 'A')) : byte;
}

} // namespace qvledger
