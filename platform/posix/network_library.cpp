#include "platform/os.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/posix/guard.h"
#include "platform/registry_key.h"
#include "platform/utf8.h"

using namespace qvledger;

constexpr DWORD kErrorInvalidLevel = 124;
constexpr DWORD kWorkstationLevel = 101;
constexpr DWORD kTextLimit = 4096; // bytes; no group has a longer name

static char gNetworkLibrary; // this variable's address is the handle of the only library

static std::wstring wideOf(std::string_view text) {
    std::wstring wide;
    while (!text.empty())
        wide.push_back(static_cast<wchar_t>(takeUtf8(text)));
    return wide;
}

// Reads the group's name from the registry.  Returns a Win32 error code.
static LONG readLanGroup(std::string *group) {
    char text[kTextLimit + 1] = ""; // the data may lack its NUL
    DWORD size = kTextLimit;
    DWORD type = 0;
    const LONG result = readRegistryValue(OS_WORKSTATION_KEY, "LanGroup", &type, text, &size);
    if (result == ERROR_SUCCESS && type != REG_SZ && type != REG_EXPAND_SZ)
        return ERROR_FILE_NOT_FOUND;
    if (result == ERROR_SUCCESS)
        *group = text;
    return result;
}

// Makes a WKSTA_INFO_101 and its texts in one block; null when memory runs out.
static BYTE *makeInfo(const std::wstring &computerName, const std::wstring &groupName) {
    const std::size_t computerLength = computerName.size() + 1;
    const std::size_t groupLength = groupName.size() + 1;
    void *block = std::calloc(sizeof(WKSTA_INFO_101) + (computerLength + groupLength) * sizeof(wchar_t), 1);
    if (block == nullptr)
        return nullptr;
    auto *info = static_cast<WKSTA_INFO_101 *>(block);
    auto *computer = reinterpret_cast<wchar_t *>(info + 1);
    computerName.copy(computer, computerName.size());
    wchar_t *group = computer + computerLength;
    groupName.copy(group, groupName.size());

    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    *info = {VER_PLATFORM_WIN32_NT,   computer, group, version.dwMajorVersion, version.dwMinorVersion,
             group + groupName.size()}; // empty, because there is no folder of a network client
    return static_cast<BYTE *>(block);
}

static DWORD workstationInfo(BYTE **buffer) {
    std::string group;
    if (const LONG result = readLanGroup(&group); result != ERROR_SUCCESS)
        return static_cast<DWORD>(result);
    char computer[16] = "";
    DWORD size = sizeof computer;
    if (GetComputerNameA(computer, &size) == 0)
        return GetLastError();
    *buffer = makeInfo(wideOf(computer), wideOf(group));
    return *buffer != nullptr ? ERROR_SUCCESS : DWORD{ERROR_NOT_ENOUGH_MEMORY};
}

extern "C" {

HMODULE LoadLibraryA(const char *inp_name) {
    return inp_name != nullptr && _stricmp(inp_name, "netapi32.dll") == 0 ? &gNetworkLibrary : nullptr;
}

FARPROC GetProcAddress(HMODULE in_library, const char *inp_name) {
    if (in_library != &gNetworkLibrary || inp_name == nullptr)
        return nullptr;
    if (std::strcmp(inp_name, "NetWkstaGetInfo") == 0)
        return reinterpret_cast<FARPROC>(&NetWkstaGetInfo);
    if (std::strcmp(inp_name, "NetApiBufferFree") == 0)
        return reinterpret_cast<FARPROC>(&NetApiBufferFree);
    return nullptr;
}

BOOL FreeLibrary(HMODULE in_library) {
    return in_library == &gNetworkLibrary ? 1 : failWith(ERROR_INVALID_HANDLE);
}

DWORD NetWkstaGetInfo(wchar_t *in_server, DWORD in_level, BYTE **outp_buffer) {
    if (in_server != nullptr || outp_buffer == nullptr)
        return ERROR_INVALID_PARAMETER; // only this machine can be queried
    *outp_buffer = nullptr;
    if (in_level != kWorkstationLevel)
        return kErrorInvalidLevel;
    try {
        return workstationInfo(outp_buffer);
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

DWORD NetApiBufferFree(void *in_buffer) {
    std::free(in_buffer);
    return ERROR_SUCCESS;
}

} // extern "C"
