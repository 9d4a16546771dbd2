#include "ala/render/value_text.h"

#include <algorithm>

using namespace qvledger;

bool Text::grow(std::size_t added) {
    const std::size_t wanted = std::max(length_ + added, 2 * capacity_);
    const bool wasElsewhere = own_ == nullptr;
    if (!resize(own_, wanted))
        return false;
    if (wasElsewhere)
        std::memcpy(own_.get(), text_, length_);
    text_ = own_.get();
    capacity_ = wanted;
    return true;
}

void Text::replace(char *string) {
    own_.reset(string);
    text_ = string;
    capacity_ = length_ = std::strlen(string);
}
