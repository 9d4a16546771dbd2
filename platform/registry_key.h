// Owner of an open registry key, and reading of a single value.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/os.h"

namespace qvledger {

struct KeyCloser {
    void operator()(HKEY key) const { static_cast<void>(RegCloseKey(key)); } // only read
};
// The destructor closes the key.  Null means that there is none.
using OpenKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// Opens a key below HKEY_LOCAL_MACHINE with the given access.  Returns 0, or the error of RegOpenKeyExA with
// the owner empty.
inline LONG openKey(const char *path, DWORD access, OpenKey &key) {
    HKEY opened = nullptr;
    const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, access, &opened);
    key.reset(result == ERROR_SUCCESS ? opened : nullptr);
    return result;
}

// Reads the type and data of a value of a key below HKEY_LOCAL_MACHINE.  size: bytes of the buffer on input,
// of the data on output.  Returns 0, or the error of RegOpenKeyExA or RegQueryValueExA.
inline LONG readRegistryValue(const char *path, const char *name, DWORD *type, void *data, DWORD *size) {
    OpenKey key;
    if (const LONG result = openKey(path, KEY_QUERY_VALUE, key); result != ERROR_SUCCESS)
        return result;
    return RegQueryValueExA(key.get(), name, nullptr, type, static_cast<BYTE *>(data), size);
}

} // namespace qvledger
