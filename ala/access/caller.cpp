#include "ala/access/caller.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <optional>

#include "ala/base/owners.h"
#include "ala/base/registry_keys.h"
#include "ala/base/trace.h"
#include "platform/byte_order.h"
#include "platform/registry_key.h"
#include "service/thread.h"

using namespace qvledger;

constexpr std::uint32_t kPacVersion = 1001;
constexpr DWORD kUserNameSize = 512;
constexpr DWORD kFirstSidSize = 512;
constexpr DWORD kLogonServiceRuns = 8; // value of StatusFlags while the network logon service runs
constexpr DWORD kWorkstationLevel = 101;

static char gMyDomainName[kDomainSize + 1] = ""; // empty: not looked up yet, or there is no domain
static std::int32_t threadOnce = 0;

// Returns the family of the operating system (dwPlatformId).  Empty if the system does not report its family.
static std::optional<DWORD> platformFamily() {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (GetVersionExA(&version) == 0)
        return std::nullopt;
    return version.dwPlatformId;
}

// ---- The user and the host ----

namespace {

struct HeapFreer {
    void operator()(void *block) const { HeapFree(GetProcessHeap(), 0, block); }
};

} // namespace

template <std::size_t Size>
static bool fill(char (&field)[Size], const char *name) {
    const std::size_t length = strnlen(name, Size);
    if (length == Size)
        return false;
    std::memcpy(field, name, length + 1);
    return true;
}

// Returns the domain of the user's account, or null.  The first look-up only returns the sizes of the domain
// and the SID.
static Malloced<char> accountDomain(const char *user) {
    std::unique_ptr<void, HeapFreer> sid(HeapAlloc(GetProcessHeap(), 0, kFirstSidSize));
    if (sid == nullptr)
        return nullptr;
    std::memset(sid.get(), 0, kFirstSidSize);
    DWORD sidSize = kFirstSidSize;
    char noDomain[1] = "";
    DWORD domainSize = 0;
    SID_NAME_USE use = SidTypeUser;
    if (LookupAccountNameA(nullptr, user, sid.get(), &sidSize, noDomain, &domainSize, &use) != 0 ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return nullptr;

    Malloced<char> domain(static_cast<char *>(std::calloc(std::size_t{domainSize} + 1, 1)));
    if (domain == nullptr)
        return nullptr;
    if (sidSize > kFirstSidSize) {
        void *grown = HeapReAlloc(GetProcessHeap(), 0, sid.get(), sidSize);
        if (grown == nullptr)
            return nullptr;
        static_cast<void>(sid.release()); // HeapReAlloc has released the old block
        sid.reset(grown);
    }
    if (LookupAccountNameA(nullptr, user, sid.get(), &sidSize, domain.get(), &domainSize, &use) == 0)
        return nullptr;
    return domain;
}

// Fills the user's credential.  The host gets the same domain as the user.  Returns 0, or 1 on failure.
static std::int32_t fillPac(ALA__pac *pac, SEC_domType_t domainType) {
    char user[kUserNameSize] = "";
    DWORD userSize = sizeof user;
    if (GetUserNameA(user, &userSize) == 0)
        return 1;
    const bool isNT = domainType == SEC_DOM_NT;
    const Malloced<char> account = isNT ? accountDomain(user) : nullptr;
    char host[kComputerNameSize] = "";
    DWORD hostSize = sizeof host;
    if ((isNT && account == nullptr) || GetComputerNameA(host, &hostSize) == 0)
        return 1;
    const char *domain = isNT ? account.get() : host;
    pac->version = toNetworkOrder(kPacVersion);
    pac->userDomType = pac->hostDomType = toNetworkOrder(domainType);
    const bool fits = fill(pac->user, user) && fill(pac->userDomain, domain) && fill(pac->host, host) &&
                      fill(pac->hostDomain, domain);
    return fits ? 0 : 1;
}

std::int32_t ALA__GetUserInfoForClientNT(ALA__pac *outp_userCred) {
    return fillPac(outp_userCred, SEC_DOM_NT);
}

std::int32_t ALA__GetUserInfoForClient95(ALA__pac *outp_userCred) {
    return fillPac(outp_userCred, SEC_DOM_W95HOST);
}

ALA_retCode_t Caller::gather() {
    const std::optional<DWORD> family = platformFamily();
    if (!family)
        return ALA_A_SYSTEM_ERR;
    const bool isNT = *family == VER_PLATFORM_WIN32_NT;
    if (!isNT && *family != VER_PLATFORM_WIN32_WINDOWS)
        return ALA_A_UNKNOWN_ERR;
    if ((isNT ? ALA__GetUserInfoForClientNT(&pac_) : ALA__GetUserInfoForClient95(&pac_)) != 0)
        return ALA_A_SYSTEM_ERR;
    credential.u.oncMsCred = {pac_.user,       pac_.userDomain,  pac_.userDomType, pac_.host,
                              pac_.hostDomain, pac_.hostDomType, nullptr};
    return ALA_N_NORMAL;
}

// ---- The machine's domain ----

// Reads the flags of the network logon device.  Sets *flags to 0 if the registry does not contain the flags
// or cannot be read.  Returns ERROR_SUCCESS, or a Win32 error code if the registry cannot be read.
static LONG readLogonFlags(DWORD *flags) {
    DWORD value = 0;
    DWORD size = sizeof value;
    DWORD type = 0;
    const LONG result = readRegistryValue(kLogonDeviceKey, "StatusFlags", &type, &value, &size);
    *flags = result == ERROR_SUCCESS && size == sizeof value ? value : 0;
    return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}

static void keepAsDomain(const wchar_t *wide) {
    const int wideLength = static_cast<int>(std::wcslen(wide));
    const int size = WideCharToMultiByte(CP_OEMCP, 0, wide, wideLength, nullptr, 0, nullptr, nullptr);
    if (size <= 0 || static_cast<std::size_t>(size) >= sizeof gMyDomainName)
        return; // a domain that is too long is ignored
    WideCharToMultiByte(CP_OEMCP, 0, wide, wideLength, gMyDomainName, size, nullptr, nullptr);
    gMyDomainName[size] = '\0';
}

// Returns a function of a library.  Casts through a function pointer type, because FARPROC is not a function
// pointer on every system.
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
    char computer[kComputerNameSize] = "";
    DWORD size = sizeof computer;
    if (GetComputerNameA(computer, &size) == 0) {
        LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "TOnceGetDomainName: GetComputerName failed\n");
        return;
    }
    std::copy(std::begin(computer), std::end(computer), gMyDomainName);
}

void qvledger::TOnceGetDomainName() {
    std::memset(gMyDomainName, 0, sizeof gMyDomainName);
    if (platformFamily() != VER_PLATFORM_WIN32_NT)
        return;
    DWORD flags = 0;
    const LONG result = readLogonFlags(&flags);
    logRegistryTrouble();
    if (result != ERROR_SUCCESS && OS_HasLentRights() != 0) {
        // Otherwise a user could make the registry unreadable, and get the computer's name as the domain.
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

Domain qvledger::completed(const char *text, SEC_domType_t networkType) {
    Domain domain = {text, fromNetworkOrder(networkType)};
    if (!isEmpty(text) && domain.type != 0)
        return domain;
    SEC_domType_t type = 0;
    const char *machine = ALA__GetHostDomain(&type);
    if (isEmpty(text))
        domain.text = isEmpty(machine) ? nullptr : machine;
    if (domain.type == 0)
        domain.type = type;
    return domain;
}

void Caller::log() const {
    const char *ofUser = completed(pac_.userDomain, pac_.userDomType).text;
    const char *ofHost = completed(pac_.hostDomain, pac_.hostDomType).text;
    ALA_DETAIL("the caller is the user \"%s\" of the domain \"%s\" on the host \"%s\" of \"%s\"\n", pac_.user,
               ofUser != nullptr ? ofUser : "", pac_.host, ofHost != nullptr ? ofHost : "");
}
