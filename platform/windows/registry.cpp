#include "platform/os.h"

#include <cstdio>
#include <system_error>

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
    const LONG result = openKey(path, KEY_READ, key);
    if (result == ERROR_SUCCESS)
        std::snprintf(text, size, "%s\\%s", OS_RegistryPath(), path);
    else if (result == ERROR_FILE_NOT_FOUND)
        std::snprintf(text, size, "%s", OS_RegistryPath());
    else
        std::snprintf(text, size, "%s", std::system_category().message(result).c_str());
    return result;
}
