// The case of ASCII letters alone, without regard to the process's locale: names must not match in one
// language alone.
#pragma once

namespace qvledger {

constexpr char asciiLower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

constexpr char asciiUpper(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - ('a' - 'A')) : byte;
}

} // namespace qvledger
