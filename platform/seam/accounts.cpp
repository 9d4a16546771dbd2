#include <cstring>
#include <vector>

#include "platform/os.h"
#include "platform/seam/seam.h"

using namespace seam;

constexpr DWORD kRoom = 512;

static const char *useName(SID_NAME_USE use) {
    switch (static_cast<int>(use)) {
    case SidTypeUser:
        return "user";
    case SidTypeGroup:
        return "group";
    case SidTypeAlias:
        return "alias";
    case SidTypeWellKnownGroup:
        return "well-known group";
    case 3:
        return "domain";
    default:
        return "another kind";
    }
}

// A size beside the length of the text that it belongs to.
static std::string sizeAnswer(DWORD size, const std::string &name) {
    const auto further = static_cast<long long>(size) - static_cast<long long>(name.size());
    return further == 0 ? "size without NUL" : further == 1 ? "size with NUL" : text("size %+lld", further);
}

static std::string result(BOOL succeeded) {
    return succeeded != 0 ? "true" : "false, " + lastError();
}

// ---- Names ----

static std::string tellOfUser() {
    char name[kRoom] = "";
    DWORD size = kRoom;
    const std::string got = result(GetUserNameA(name, &size));
    tell("`GetUserNameA`", got + ", " + sizeAnswer(size, name));
    char none[1] = "";
    size = 1;
    const std::string refused = result(GetUserNameA(none, &size));
    tell("`GetUserNameA`, no room", refused + ", " + sizeAnswer(size, name));
    return name;
}

static std::string tellOfComputer() {
    char name[kRoom] = "";
    DWORD size = kRoom;
    const std::string got = result(GetComputerNameA(name, &size));
    tell("`GetComputerNameA`", got + ", " + sizeAnswer(size, name));
    char none[1] = "";
    size = 1;
    const std::string refused = result(GetComputerNameA(none, &size));
    tell("`GetComputerNameA`, no room", refused + ", " + sizeAnswer(size, name));
    bool hasSmall = false;
    for (const char letter : std::string(name))
        hasSmall = hasSmall || (letter >= 'a' && letter <= 'z');
    tell("`GetComputerNameA`, small letters", hasSmall ? "as the host's name has them" : "none");
    return name;
}

namespace {

struct FoundAccount {
    std::string answer;
    std::vector<char> sid;
    std::string domain;
    SID_NAME_USE use = SidTypeUser;
};

} // namespace

// As a caller does it that asks for the sizes first.
static FoundAccount lookUp(const char *name) {
    FoundAccount found;
    char none[1] = "";
    DWORD sidSize = 0;
    DWORD domainSize = 0;
    SetLastError(0);
    found.answer =
        result(LookupAccountNameA(nullptr, name, nullptr, &sidSize, none, &domainSize, &found.use));
    if (sidSize == 0)
        return found;
    found.sid.resize(sidSize);
    std::vector<char> domain(domainSize);
    const DWORD asked = domainSize;
    const std::string got = result(LookupAccountNameA(nullptr, name, found.sid.data(), &sidSize,
                                                      domain.data(), &domainSize, &found.use));
    found.domain = domain.data();
    found.answer += ", " + sizeAnswer(asked, found.domain) + "; then " + got + ", " +
                    sizeAnswer(domainSize, found.domain) + ", " + useName(found.use);
    return found;
}

static void tellOfNames() {
    const std::string user = tellOfUser();
    const std::string computer = tellOfComputer();
    FoundAccount caller = lookUp(user.c_str());
    tell("`LookupAccountNameA`, the caller", caller.answer);
    tell("`LookupAccountNameA`, the domain of a local caller",
         _stricmp(caller.domain.c_str(), computer.c_str()) == 0 ? "the computer's name" : "another one");
    tell("`LookupAccountNameA`, nobody", lookUp("nobody-has-this-name").answer);
    tell("`LookupAccountNameA`, the computer", lookUp(computer.c_str()).answer);
    if (caller.sid.empty())
        return;
    char name[kRoom] = "";
    char domain[kRoom] = "";
    DWORD nameSize = kRoom;
    DWORD domainSize = kRoom;
    SID_NAME_USE use = SidTypeUser;
    std::string got =
        result(LookupAccountSidA(nullptr, caller.sid.data(), name, &nameSize, domain, &domainSize, &use));
    got += name == user ? ", the caller, " : ", another one, ";
    tell("`LookupAccountSidA`, the caller", got + sizeAnswer(nameSize, name) + ", " + useName(use));
    nameSize = 1;
    got = result(LookupAccountSidA(nullptr, caller.sid.data(), name, &nameSize, domain, &domainSize, &use));
    tell("`LookupAccountSidA`, no room", got + ", " + sizeAnswer(nameSize, user));
}

// ---- Token ----

static void tellOfToken() {
    HANDLE token = nullptr;
    tell("`OpenProcessToken`", result(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)));
    DWORD needed = 0;
    const std::string refused = result(GetTokenInformation(token, TokenGroups, nullptr, 0, &needed));
    tell("`GetTokenInformation`, no room", refused + (needed != 0 ? ", size needed" : ""));
    std::vector<char> room(needed + 1);
    tell("`GetTokenInformation`",
         result(GetTokenInformation(token, TokenGroups, room.data(), needed, &needed)));
    const auto *groups = reinterpret_cast<const TOKEN_GROUPS *>(room.data());
    tell("`GetTokenInformation`, groups", groups->GroupCount != 0 ? "some" : "none");
    tell("`CloseHandle`, a token", result(CloseHandle(token)));
}

// ---- System ----

static void tellOfLibrary() {
    tell("`LoadLibraryA`, a library that is not there",
         LoadLibraryA("none.dll") == nullptr ? "null" : "loaded");
    const HMODULE library = LoadLibraryA("netapi32.dll");
    tell("`LoadLibraryA`, netapi32.dll", library == nullptr ? "null" : "loaded");
    tell("`GetProcAddress`, a function that is not there",
         GetProcAddress(library, "None") == nullptr ? "null" : "found");
    const auto info = reinterpret_cast<decltype(&NetWkstaGetInfo)>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "NetWkstaGetInfo")));
    const auto release = reinterpret_cast<decltype(&NetApiBufferFree)>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "NetApiBufferFree")));
    tell("`GetProcAddress`, both functions", info != nullptr && release != nullptr ? "found" : "null");
    BYTE *buffer = nullptr;
    if (info == nullptr || release == nullptr)
        return;
    tell("`NetWkstaGetInfo`, level 5", std::to_string(info(nullptr, 5, &buffer)));
    const DWORD got = info(nullptr, 101, &buffer);
    tell("`NetWkstaGetInfo`, level 101", std::to_string(got));
    if (got == 0)
        tell("`NetApiBufferFree`", std::to_string(release(buffer)));
    tell("`FreeLibrary`", result(FreeLibrary(library)));
}

void seam::tellOfAccounts() {
    tellOfNames();
    tellOfToken();
    OSVERSIONINFOA version = {};
    tell("`GetVersionExA`, no size", result(GetVersionExA(&version)));
    version.dwOSVersionInfoSize = sizeof version;
    const std::string got = result(GetVersionExA(&version));
    tell("`GetVersionExA`", got + ", platform " + std::to_string(version.dwPlatformId));
    tellOfLibrary();
}
