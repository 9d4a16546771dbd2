#include "ala/render/value_text.h"

#include <algorithm>

using namespace qvledger;

bool Text::grow(std::size_t added) {
    const std::size_t wanted = std::max(length + added, 2 * capacity);
    const bool wasElsewhere = own == nullptr;
    if (!resize(own, wanted))
        return false;
    if (wasElsewhere)
        std::memcpy(own.get(), text, length);
    text = own.get();
    capacity = wanted;
    return true;
}

void Text::replace(char *string) {
    own.reset(string);
    text = string;
    capacity = length = std::strlen(string);
}
