// The calling function's buffer for a name, and the buffer's size in bytes.
#pragma once

#include <cstring>
#include <string>

#include "platform/os.h"

namespace qvledger {

class NameBuffer {
public:
    // REQUIRES: name outlives this object.
    NameBuffer(char *text, DWORD *size, const std::string &name) : text_(text), size_(size), name_(name) {}

    bool fits() const { return text_ != nullptr && name_.size() < *size_; }
    // Sets the size to the bytes that the name needs, NUL included.
    void setNeeded() { *size_ = static_cast<DWORD>(name_.size() + 1); }
    // Copies the name and sets the size to its length without the NUL.  REQUIRES: fits().
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
