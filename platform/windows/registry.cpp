#include "platform/os.h"

#include <cstdio>

#include "platform/registry_key.h"

using namespace qvledger;

const char *OS_RegistryTrouble() {
    return ""; // it has no file that could be malformed
}

const char *OS_RegistryPath() {
    return "HKEY_LOCAL_MACHINE";
}

LONG OS_PlaceOfKey(const char *inp_path, char *outp_text, std::size_t in_size) {
    OpenKey key;
    *outp_text = '\0';
    const LONG result = openKey(inp_path, KEY_READ, key);
    if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND)
        std::snprintf(outp_text, in_size, result == ERROR_SUCCESS ? "%s\\%s" : "%s", OS_RegistryPath(),
                      inp_path);
    return result;
}
