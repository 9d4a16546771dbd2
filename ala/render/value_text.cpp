#include "ala/render/value_text.h"

#include <algorithm>
#include <cstring>

using namespace qvledger;

constexpr std::size_t kSmallest = 256;

bool Text::grow(std::size_t size) {
    const std::size_t wanted = std::max({size, 2 * capacity, kSmallest});
    const bool wasElsewhere = own == nullptr;
    if (!resize(own, wanted))
        return false;
    if (wasElsewhere)
        std::copy_n(text, length, own.get()); // from the maker's buffer, if there was one
    text = own.get();
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
