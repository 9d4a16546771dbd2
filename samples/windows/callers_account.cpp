#include "samples/callers_account.h"

#include <stdexcept>
#include <system_error>

#include <windows.h>

namespace samples {

[[noreturn]] static void fail(const char *call) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

std::string computerName() {
    char name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD size = sizeof name;
    if (GetComputerNameA(name, &size) == 0)
        fail("GetComputerName");
    return name;
}

static std::string userName() {
    char name[257];
    DWORD size = sizeof name;
    if (GetUserNameA(name, &size) == 0)
        fail("GetUserName");
    return name;
}

// Sets the group's name and domain, as in access lists.  The domain of a local group is the computer's name.
// False if the SID has no name or is not that of a group.
static bool nameGroup(PSID sid, AccountName &group) {
    char name[257];
    char domain[257];
    DWORD nameSize = sizeof name;
    DWORD domainSize = sizeof domain;
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountSidA(nullptr, sid, name, &nameSize, domain, &domainSize, &use) == 0 ||
        (use != SidTypeGroup && use != SidTypeAlias))
        return false;
    group = {name, use == SidTypeAlias ? computerName() : domain};
    return true;
}

AccountName accountName(const std::string &full) {
    alignas(SID) char sid[SECURITY_MAX_SID_SIZE];
    char domain[257];
    DWORD sidSize = sizeof sid;
    DWORD domainSize = sizeof domain;
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountNameA(nullptr, full.c_str(), sid, &sidSize, domain, &domainSize, &use) == 0)
        fail("LookupAccountName");
    return {full.substr(full.find('\\') + 1), domain};
}

static std::vector<char> tokenGroups() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0)
        fail("OpenProcessToken");
    DWORD size = 0;
    GetTokenInformation(token, TokenGroups, nullptr, 0, &size);
    std::vector<char> groups(size);
    const BOOL isThere = GetTokenInformation(token, TokenGroups, groups.data(), size, &size);
    CloseHandle(token);
    if (isThere == 0)
        fail("GetTokenInformation");
    return groups;
}

Account callersAccount() {
    const std::vector<char> memory = tokenGroups();
    const auto *groups = reinterpret_cast<const TOKEN_GROUPS *>(memory.data());
    Account account{.user = accountName(userName()), .groups = {}, .groupIds = groups->GroupCount};
    for (DWORD i = 0; i < groups->GroupCount; ++i)
        if (AccountName name; nameGroup(groups->Groups[i].Sid, name))
            account.groups.push_back(name);
    return account;
}

} // namespace samples
