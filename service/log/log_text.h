// The buffer for building log entries and messages.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platform/malloced.h"
#include "service/visible.h"

namespace qvledger {

// A growing text.  When memory runs out, the text is truncated to the part that fits.
class LogText {
public:
    void append(std::string_view piece) {
        const std::size_t size = makeRoom(piece.size());
        std::memcpy(text() + length_, piece.data(), size);
        length_ += size;
    }
    // Appends the piece with control characters escaped.
    void appendVisible(std::string_view piece) {
        escapeControls(piece, [this](std::string_view shown) { append(shown); });
    }
    __attribute__((format(printf, 2, 3))) void appendFormat(const char *format, ...) {
        std::va_list values;
        va_start(values, format);
        appendValues(format, values);
        va_end(values);
    }
    void appendValues(const char *format, std::va_list values) {
        std::va_list again;
        va_copy(again, values);
        const std::size_t before = capacity_ - length_;
        const int needed = std::vsnprintf(text() + length_, before + 1, format, values);
        const std::size_t size = makeRoom(static_cast<std::size_t>(std::max(needed, 0)));
        if (size > before)
            std::vsnprintf(text() + length_, size + 1, format, again);
        va_end(again);
        length_ += size;
    }
    // Appends the last character, for which there is always room.
    void end(char character) { text()[length_++] = character; }

    std::string_view view() const { return {onHeap_ ? onHeap_.get() : inPlace_, length_}; }

private:
    char *text() { return onHeap_ ? onHeap_.get() : inPlace_; }

    // Makes room for `size` more bytes.  Returns the number of bytes that fit: `size`, unless memory runs
    // out.
    std::size_t makeRoom(std::size_t size) {
        const bool wasInPlace = onHeap_ == nullptr;
        if (size <= capacity_ - length_ || !resize(onHeap_, 2 * capacity_ + size + 1))
            return std::min(size, capacity_ - length_);
        if (wasInPlace)
            std::memcpy(onHeap_.get(), inPlace_, length_);
        capacity_ = 2 * capacity_ + size;
        return size;
    }

    char inPlace_[768];
    Malloced<char> onHeap_;
    std::size_t capacity_ = sizeof inPlace_ - 1; // excludes room for the last character or a NUL
    std::size_t length_ = 0;
};

} // namespace qvledger
