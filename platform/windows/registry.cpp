#include "platform/os.h"

#include <cstdio>

#include "platform/registry_key.h"

using namespace qvledger;

const char *OS_RegistryTrouble() {
    return ""; // there is no registry file
}

const char *OS_RegistryPath() {
    return "HKEY_LOCAL_MACHINE";
}

LONG OS_PlaceOfKey(const char *path, char *text, std::size_t size) {
    OpenKey key;
    *text = '\0';
    const LONG result = openKey(path, KEY_READ, key);
    if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND)
        std::snprintf(text, size, result == ERROR_SUCCESS ? "%s\\%s" : "%s", OS_RegistryPath(), path);
    return result;
}
