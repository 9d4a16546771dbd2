// An open key of the registry, and a single value of it.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/os.h"

namespace qvledger {

struct KeyCloser {
    void operator()(HKEY key) const { static_cast<void>(RegCloseKey(key)); } // only read from
};
// Closed when its owner goes; null for none.
using OpenKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// Opens a key below HKEY_LOCAL_MACHINE for the access asked for.  0, or the error of RegOpenKeyExA with the
// owner empty.
inline LONG openKey(const char *path, DWORD access, OpenKey &key) {
    HKEY opened = nullptr;
    const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, access, &opened);
    key.reset(result == ERROR_SUCCESS ? opened : nullptr);
    return result;
}

// Type and data of a value of a key below HKEY_LOCAL_MACHINE.  size: bytes of the buffer in, of the data out.
// 0, or the error of RegOpenKeyExA or RegQueryValueExA.
inline LONG readRegistryValue(const char *path, const char *name, DWORD *type, void *data, DWORD *size) {
    OpenKey key;
    if (const LONG result = openKey(path, KEY_QUERY_VALUE, key); result != ERROR_SUCCESS)
        return result;
    return RegQueryValueExA(key.get(), name, nullptr, type, static_cast<BYTE *>(data), size);
}

} // namespace qvledger
