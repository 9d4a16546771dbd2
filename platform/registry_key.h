// Owner of an open registry key, and a function that reads a single value.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/os.h"

namespace qvledger {

struct KeyCloser {
    void operator()(HKEY key) const { static_cast<void>(RegCloseKey(key)); } // a failure loses nothing
};
// The destructor closes the key.  Null means that no key is open.
using OpenKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// Opens a key below HKEY_LOCAL_MACHINE with the given access.  Returns 0.  On failure, empties the owner and
// returns the error of RegOpenKeyExA.
inline LONG openKey(const char *path, DWORD access, OpenKey &key) {
    HKEY opened = nullptr;
    const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, access, &opened);
    key.reset(result == ERROR_SUCCESS ? opened : nullptr);
    return result;
}

// Reads the type and data of a value of a key below HKEY_LOCAL_MACHINE.  size: on input, bytes of the buffer;
// on output, bytes of the data.  Returns 0, or the error of RegOpenKeyExA or RegQueryValueExA.
inline LONG readRegistryValue(const char *path, const char *name, DWORD *type, void *data, DWORD *size) {
    OpenKey key;
    if (const LONG result = openKey(path, KEY_QUERY_VALUE, key); result != ERROR_SUCCESS)
        return result;
    return RegQueryValueExA(key.get(), name, nullptr, type, static_cast<BYTE *>(data), size);
}

} // namespace qvledger
