// Reads a registry file through the registry calls.
#include "platform/os.h"
#include "tests/fuzz/sandbox.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    Sandbox::write(sandbox.root().registry(), {bytes, size});
    for (const char *path : {"SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment", "SYSTEM", "A"}) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS)
            continue;
        BYTE data[260];
        char name[260];
        LONG result = ERROR_SUCCESS;
        for (DWORD index = 0; result == ERROR_SUCCESS || result == ERROR_MORE_DATA; ++index) {
            DWORD nameSize = sizeof name;
            DWORD dataSize = sizeof data;
            DWORD type = 0;
            result = RegEnumValueA(key, index, name, &nameSize, nullptr, &type, data, &dataSize);
            if (result == ERROR_SUCCESS) {
                dataSize = sizeof data;
                RegQueryValueExA(key, name, nullptr, &type, data, &dataSize);
            }
        }
        RegCloseKey(key);
    }
    return 0;
}
