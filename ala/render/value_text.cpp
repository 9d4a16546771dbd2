#include "ala/render/value_text.h"

#include <algorithm>
#include <cstring>

constexpr std::size_t kSmallest = 256;

bool Text::grow(std::size_t size) {
    const std::size_t wanted = std::max({size, 2 * capacity, kSmallest});
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

void Text::replace(char *givenText) {
    own.reset(givenText);
    text = givenText;
    length = givenText != nullptr ? std::strlen(givenText) : 0;
    capacity = givenText != nullptr ? length + 1 : 0;
}

void Text::add(std::string_view givenText) {
    const std::size_t size = length + givenText.size() + 1;
    if (noMemory || (size > capacity && !grow(size))) {
        noMemory = true;
        return;
    }
    std::copy(givenText.begin(), givenText.end(), text + length);
    length += givenText.size();
    text[length] = '\0';
}

void Text::add(const Text &givenText) {
    if (givenText.failed())
        fail();
    add(std::string_view(givenText.c_str(), givenText.length));
}

void Text::addUpToNul(const void *bytes, std::size_t givenLength) {
    const auto *characters = static_cast<const char *>(bytes);
    add({characters, strnlen(characters, givenLength)});
}
