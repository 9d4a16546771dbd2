// A caller's buffer for a name, with its size.
#pragma once

#include <cstring>
#include <string>

#include "platform/os.h"

namespace qvledger {

class NameBuffer {
public:
    // name must outlive this.
    NameBuffer(char *givenText, DWORD *givenSize, const std::string &givenName)
        : text(givenText), size(givenSize), name(givenName) {}

    bool fits() const { return text != nullptr && name.size() < *size; }
    void tellNeeded() { *size = static_cast<DWORD>(name.size() + 1); }
    // REQUIRES: fits().  The size becomes that of the name without its NUL.
    void write() {
        std::memcpy(text, name.c_str(), name.size() + 1);
        *size = static_cast<DWORD>(name.size());
    }

private:
    char *text;
    DWORD *size;
    const std::string &name;
};

} // namespace qvledger
