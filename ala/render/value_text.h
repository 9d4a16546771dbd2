// A growing buffer for a value's text.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/malloced.h"

namespace qvledger {

// A text without a fixed limit.  It starts in the creator's buffer and moves to the heap when it outgrows the
// buffer.  When memory runs out or fail() is called, failed() is true and add() no longer changes the text.
class Text {
public:
    Text(char *room, std::size_t size) : text_(room), capacity_(size) {}

    void add(std::string_view added) {
        if (noMemory_ || (added.size() > capacity_ - length_ && !grow(added.size()))) [[unlikely]]
            return fail();
        std::memcpy(text_ + length_, added.data(), added.size());
        length_ += added.size();
    }
    void add(char character) { add(std::string_view(&character, 1)); }
    // Adds the characters up to a NUL, at most `size`.
    void addUpToNul(const void *bytes, std::size_t size) {
        const auto *characters = static_cast<const char *>(bytes);
        add({characters, strnlen(characters, size)});
    }
    template <class Number>
    void addNumber(Number number) {
        char digits[24];
        add({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
    }

    // Replaces the text by a string from malloc and takes ownership of the string.
    void replace(char *string);

    void clear() { length_ = 0; }
    void fail() { noMemory_ = true; }
    bool failed() const { return noMemory_; }
    std::string_view view() const { return {text_, length_}; }

private:
    bool grow(std::size_t added);

    Malloced<char> own_;
    char *text_;           // points into own_ or into the creator's buffer
    std::size_t capacity_; // bytes
    std::size_t length_ = 0;
    bool noMemory_ = false;
};

} // namespace qvledger
