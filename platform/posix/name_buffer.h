// A caller's buffer for a name, and its size in bytes.
#pragma once

#include <cstring>
#include <string>

#include "platform/os.h"

namespace qvledger {

class NameBuffer {
public:
    // REQUIRES: name outlives this.
    NameBuffer(char *text, DWORD *size, const std::string &name) : text_(text), size_(size), name_(name) {}

    bool fits() const { return text_ != nullptr && name_.size() < *size_; }
    void setNeeded() { *size_ = static_cast<DWORD>(name_.size() + 1); }
    // REQUIRES: fits().  Sets the size to the name's without its NUL.
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
