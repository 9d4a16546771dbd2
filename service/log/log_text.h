// The buffer that log entries and messages are built in.
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

// Text that grows.  When memory runs out it keeps what it has and takes no more.
class LogText {
public:
    LogText() = default;
    LogText(const LogText &) = delete;
    LogText &operator=(const LogText &) = delete;

    void append(std::string_view givenText) {
        const std::size_t size = makeRoom(givenText.size());
        std::memcpy(text() + length, givenText.data(), size);
        length += size;
    }

    void appendFormat(const char *format, std::va_list values) {
        std::va_list again;
        va_copy(again, values);
        const int needed = std::vsnprintf(text() + length, capacity - length, format, values);
        if (needed > 0 && static_cast<std::size_t>(needed) >= capacity - length) {
            makeRoom(static_cast<std::size_t>(needed) + 1);
            std::vsnprintf(text() + length, capacity - length, format, again);
        }
        va_end(again);
        if (needed > 0 && capacity > length) // vsnprintf keeps a byte for its NUL
            length += std::min(static_cast<std::size_t>(needed), capacity - length - 1);
    }

    void appendVisible(std::string_view text) {
        escapeControls(text, [this](std::string_view piece) { append(piece); });
    }

    // The last character in any case, in the place of another one if it must be.
    void end(char character) {
        if (makeRoom(1) == 0)
            --length;
        text()[length++] = character;
    }

    void clear() {
        onHeap.reset();
        capacity = sizeof inPlace;
        length = 0;
    }
    std::string_view view() const { return {onHeap ? onHeap.get() : inPlace, length}; }

private:
    char *text() { return onHeap ? onHeap.get() : inPlace; }

    // How many of size further bytes there is room for: all, unless memory ran out.
    std::size_t makeRoom(std::size_t size) {
        if (size > capacity - length) {
            const bool wasInPlace = onHeap == nullptr;
            const std::size_t larger = 2 * capacity + size;
            if (!resize(onHeap, larger))
                return capacity - length;
            if (wasInPlace)
                std::memcpy(onHeap.get(), inPlace, length);
            capacity = larger;
        }
        return size;
    }

    char inPlace[768];
    Malloced<char> onHeap;
    std::size_t capacity = sizeof inPlace;
    std::size_t length = 0;
};

} // namespace qvledger
