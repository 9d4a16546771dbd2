#include "ala/access/groups.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "ala/base/owners.h"
#include "ala/base/trace.h"

using namespace qvledger;

constexpr DWORD kTokenSize = 512; // maximum bytes of a token's groups; larger tokens are refused
constexpr DWORD kNameSize = 512;  // maximum bytes of a group's name, and of its domain

namespace {

struct HandleCloser {
    void operator()(void *handle) const { CloseHandle(handle); }
};
using OpenToken = std::unique_ptr<void, HandleCloser>;

} // namespace

// Adds a group of the token to the list if it is a domain group or local group.  Skips a group that can only
// deny access: a program without elevated rights has the group of administrators in this form.  False when
// memory runs out.
static bool addGroup(ALA_groupSIDList **list, const SID_AND_ATTRIBUTES &group, const char *computer) {
    char name[kNameSize] = "";
    char domain[kNameSize] = "";
    DWORD nameSize = sizeof name;
    DWORD domainSize = sizeof domain;
    SID_NAME_USE use = SidTypeUser;
    if ((group.Attributes & SE_GROUP_USE_FOR_DENY_ONLY) != 0 ||
        LookupAccountSidA(nullptr, group.Sid, name, &nameSize, domain, &domainSize, &use) == 0 ||
        (use != SidTypeGroup && use != SidTypeAlias))
        return true;
    Malloced<ALA_groupSIDList> node = makeZeroed<ALA_groupSIDList>();
    Malloced<char> ownName(_strdup(name));
    // The domain of a local group is the computer's name.
    Malloced<char> ownDomain(_strdup(use == SidTypeAlias ? computer : domain));
    if (node == nullptr || ownName == nullptr || ownDomain == nullptr)
        return false;
    *node = {ownName.release(), ownDomain.release(), *list};
    *list = node.release();
    return true;
}

std::int32_t _ALA_CreateGroupSIDList(const ALA_credential_t *, ALA_groupSIDList **inoutpp_gSidList) {
    if (*inoutpp_gSidList != nullptr)
        return 0;
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == 0)
        return 1;
    const OpenToken token(opened);
    char computer[kComputerNameSize] = "";
    DWORD computerSize = sizeof computer;
    if (GetComputerNameA(computer, &computerSize) == 0)
        return 1;
    alignas(TOKEN_GROUPS) std::byte memory[kTokenSize];
    const auto *groups = reinterpret_cast<const TOKEN_GROUPS *>(memory);
    DWORD needed = 0;
    if (GetTokenInformation(token.get(), TokenGroups, memory, sizeof memory, &needed) == 0) {
        if (GetLastError() == ERROR_INSUFFICIENT_BUFFER)
            ALA_DETAIL("the caller is in too many groups for the 512 bytes of their list: group entries "
                       "admit nobody\n");
        return 1;
    }
    const SID_AND_ATTRIBUTES *first = groups->Groups;
    const bool complete =
        std::all_of(first, first + groups->GroupCount, [&](const SID_AND_ATTRIBUTES &group) {
            return addGroup(inoutpp_gSidList, group, computer);
        });
    if (!complete)
        ALA__ClearGroupSIDList(inoutpp_gSidList);
    return complete ? 0 : 1;
}

std::int32_t ALA__ClearGroupSIDList(ALA_groupSIDList **inoutpp_gSidList) {
    while (*inoutpp_gSidList != nullptr) {
        ALA_groupSIDList *node = *inoutpp_gSidList;
        *inoutpp_gSidList = node->next;
        std::free(node->user);
        std::free(node->domainName);
        std::free(node);
    }
    return 0;
}

static bool equalsIgnoringCase(const char *text, const char *bytes, std::size_t length) {
    return std::strlen(text) == length && _memicmp(text, bytes, length) == 0;
}

bool qvledger::isListed(const ALA_groupSIDList *list, const char *name, std::size_t nameLength,
                        const char *domain) {
    for (const ALA_groupSIDList *group = list; group != nullptr; group = group->next)
        if (equalsIgnoringCase(group->user, name, nameLength) &&
            equalsIgnoringCase(group->domainName, domain, std::strlen(domain)))
            return true;
    return false;
}
