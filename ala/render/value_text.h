// The buffer in which a value's text grows.
#pragma once

#include <charconv>
#include <cstddef>
#include <string_view>

#include "ala/base/owners.h"

namespace qvledger {

// A NUL-terminated text without a fixed limit.  It begins in a buffer of its maker's, if it is given one, and
// moves to one of its own when it outgrows that.  When memory runs out, here or for something that was to be
// added, the text stays as it was, what is added later is dropped, and failed() tells.
class Text {
public:
    Text() = default;
    Text(char *room, std::size_t givenCapacity) : text(room), capacity(givenCapacity) { *text = '\0'; }

    void add(std::string_view givenText);
    void add(char character) { add(std::string_view(&character, 1)); }
    // Another text; one that failed fails this one.
    void add(const Text &givenText);
    // The characters up to a NUL, at most length.
    void addUpToNul(const void *bytes, std::size_t givenLength);
    template <class Number>
    void addNumber(Number number) {
        char digits[24];
        add({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
    }

    // Becomes a text from malloc, which is taken over; null is an empty one.
    void replace(char *givenText);

    std::size_t size() const { return length; }
    const char *c_str() const { return text != nullptr ? text : ""; }
    void fail() { noMemory = true; }
    bool failed() const { return noMemory; }
    // The characters for their next owner, from malloc unless they are in the maker's buffer still; null when
    // nothing was added to a text that began without one.
    char *release() {
        static_cast<void>(own.release());
        return text;
    }

    // The same of one that is in memory of its own, which becomes as small as the text.
    char *releaseToFit() {
        static_cast<void>(resize(own, length + 1)); // without memory to move to it stays as large
        return own.release();
    }

private:
    bool grow(std::size_t size);

    Malloced<char> own;
    char *text = nullptr;     // in own or in the maker's buffer
    std::size_t capacity = 0; // bytes
    std::size_t length = 0;   // without the NUL
    bool noMemory = false;
};

} // namespace qvledger
