#include "ala/access/host_domain.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "ala/base/owners.h"
#include "ala/base/registry_keys.h"
#include "ala/base/trace.h"
#include "platform/registry_key.h"
#include "service/thread.h"

using namespace qvledger;

constexpr DWORD kLogonServiceRuns = 8; // StatusFlags of the network logon device
constexpr DWORD kWorkstationLevel = 101;

static char gMyDomainName[kDomainSize + 1] = ""; // empty until known, and when none is found
static std::int32_t threadOnce = 0;

static bool isWindowsNT() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExA(&version) != 0 && version.dwPlatformId == VER_PLATFORM_WIN32_NT;
}

// The flags of the network logon device, 0 where the registry has none.  A Win32 error code when it cannot be
// read.
static LONG readLogonFlags(DWORD *givenFlags) {
    DWORD flags = 0;
    DWORD size = sizeof flags;
    DWORD type = 0;
    const LONG result = readRegistryValue(kLogonDeviceKey, "StatusFlags", &type, &flags, &size);
    *givenFlags = result == ERROR_SUCCESS && size == sizeof flags ? flags : 0;
    return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}

static void keepAsDomain(const wchar_t *wide) {
    const int wideLength = static_cast<int>(std::wcslen(wide));
    const int size = WideCharToMultiByte(CP_OEMCP, 0, wide, wideLength, nullptr, 0, nullptr, nullptr);
    if (size <= 0 || static_cast<std::size_t>(size) >= sizeof gMyDomainName)
        return; // a domain that does not fit is none
    WideCharToMultiByte(CP_OEMCP, 0, wide, wideLength, gMyDomainName, size, nullptr, nullptr);
    gMyDomainName[size] = '\0';
}

// By way of the type that stands for any function, as FARPROC does not on every system.
template <class Function>
static Function functionOf(HMODULE library, const char *name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

static void takeLanGroup() {
    HMODULE library = LoadLibraryA("netapi32.dll");
    if (library == nullptr)
        return;
    const auto getInfo = functionOf<decltype(&NetWkstaGetInfo)>(library, "NetWkstaGetInfo");
    const auto freeInfo = functionOf<decltype(&NetApiBufferFree)>(library, "NetApiBufferFree");
    BYTE *buffer = nullptr;
    if (getInfo != nullptr && freeInfo != nullptr) {
        if (getInfo(nullptr, kWorkstationLevel, &buffer) != 0) {
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "SEC_GetDefaultDomain: NetWkstaGetInfo failed\n");
        } else {
            keepAsDomain(reinterpret_cast<const WKSTA_INFO_101 *>(buffer)->wki101_langroup);
            freeInfo(buffer);
        }
    }
    FreeLibrary(library);
}

static void takeComputerName() {
    char computer[16] = "";
    DWORD size = sizeof computer;
    if (GetComputerNameA(computer, &size) == 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "TOnceGetDomainName: GetComputerName failed\n");
        return;
    }
    std::copy(std::begin(computer), std::end(computer), gMyDomainName);
}

void qvledger::TOnceGetDomainName() {
    std::memset(gMyDomainName, 0, sizeof gMyDomainName);
    if (!isWindowsNT())
        return;
    DWORD flags = 0;
    const LONG result = readLogonFlags(&flags);
    logRegistryTrouble();
    if (result != ERROR_SUCCESS && OS_HasLentRights() != 0) {
        // The caller may have seen to it, so that the computer's name would be taken for the domain.
        LOG_CondMessage(
            LOG_ERROR, __FILE__, __LINE__,
            "TOnceGetDomainName: the registry cannot be read, error %d; the machine has no domain\n",
            static_cast<int>(result));
        return;
    }
    if (flags == kLogonServiceRuns)
        takeLanGroup();
    else
        takeComputerName();
}

const char *ALA__GetHostDomain(SEC_domType_t *outp_domType) {
    const bool known = THR_Once(&threadOnce, TOnceGetDomainName) == 0;
    if (!known)
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "ALA__GetUserDomain: THR_Once failed\n");
    if (outp_domType != nullptr)
        *outp_domType = known ? SEC_DOM_NT : 0;
    return known ? gMyDomainName : nullptr;
}

const char *ALA__GetUserDomain(SEC_domType_t *outp_domType) {
    return ALA__GetHostDomain(outp_domType);
}
