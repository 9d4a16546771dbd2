// The buffer in which a value's text grows.
#pragma once

#include <charconv>
#include <cstddef>
#include <string_view>

#include "ala/owners.h"

// A NUL-terminated text without a fixed limit.  When memory runs out, here or for something that was to be
// added, the text stays as it was, what is added later is dropped, and failed() tells.
class Text {
public:
    Text() = default;
    // Takes over a buffer that holds an empty text.
    Text(char *in_buffer, std::size_t in_capacity) : buffer(in_buffer), capacity(in_capacity) {}

    void add(std::string_view in_text);
    void add(char in_character) { add(std::string_view(&in_character, 1)); }
    // Another text; one that failed fails this one.
    void add(const Text &in_text);
    // The characters up to a NUL, at most in_length.
    void addUpToNul(const void *inp_bytes, std::size_t in_length);
    template <class Number>
    void addNumber(Number in_number) {
        char digits[24];
        add({digits, std::to_chars(digits, digits + sizeof digits, in_number).ptr});
    }

    const char *c_str() const { return buffer != nullptr ? buffer.get() : ""; }
    void fail() { noMemory = true; }
    bool failed() const { return noMemory; }
    // The buffer for its next owner; null when nothing was added to a text that began without one.
    char *release() { return buffer.release(); }

private:
    bool grow(std::size_t in_size);

    Malloced<char> buffer;
    std::size_t capacity = 0; // bytes
    std::size_t length = 0;   // without the NUL
    bool noMemory = false;
};
