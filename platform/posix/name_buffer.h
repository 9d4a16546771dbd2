// A caller's buffer for a name, with its size.
#pragma once

#include <cstring>
#include <string>

#include "platform/os.h"

namespace qvledger {

class NameBuffer {
public:
    // name must outlive this.
    NameBuffer(char *text, DWORD *size, const std::string &name) : text_(text), size_(size), name_(name) {}

    bool fits() const { return text_ != nullptr && name_.size() < *size_; }
    void tellNeeded() { *size_ = static_cast<DWORD>(name_.size() + 1); }
    // REQUIRES: fits().  The size becomes that of the name without its NUL.
    void write() {
        std::memcpy(text_, name_.c_str(), name_.size() + 1);
        *size_ = static_cast<DWORD>(name_.size());
    }

private:
    char *text_;
    DWORD *size_;
    const std::string &name_;
};

} // namespace qvledger
