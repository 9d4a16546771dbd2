#include "ala/render/value_text.h"

#include <algorithm>
#include <cstring>

constexpr std::size_t kSmallest = 256;

bool Text::grow(std::size_t in_size) {
    const std::size_t wanted = std::max({in_size, 2 * capacity, kSmallest});
    auto *grown = static_cast<char *>(std::realloc(own.get(), wanted));
    if (grown == nullptr)
        return false;
    if (own == nullptr)
        std::copy_n(text, length, grown); // from the maker's buffer, if there was one
    static_cast<void>(own.release());     // realloc has taken it over
    own.reset(grown);
    text = grown;
    capacity = wanted;
    return true;
}

void Text::replace(char *in_text) {
    own.reset(in_text);
    text = in_text;
    length = in_text != nullptr ? std::strlen(in_text) : 0;
    capacity = in_text != nullptr ? length + 1 : 0;
}

void Text::add(std::string_view in_text) {
    const std::size_t size = length + in_text.size() + 1;
    if (noMemory || (size > capacity && !grow(size))) {
        noMemory = true;
        return;
    }
    std::copy(in_text.begin(), in_text.end(), text + length);
    length += in_text.size();
    text[length] = '\0';
}

void Text::add(const Text &in_text) {
    if (in_text.failed())
        fail();
    add(std::string_view(in_text.c_str(), in_text.length));
}

void Text::addUpToNul(const void *inp_bytes, std::size_t in_length) {
    const auto *characters = static_cast<const char *>(inp_bytes);
    add({characters, strnlen(characters, in_length)});
}
