#include "ala/access/group_admission.h"

#include <algorithm>
#include <cstring>

#include "ala/access/acl.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "service/text/text.h"

using namespace qvledger;

constexpr DWORD kTokenSize = 512; // bytes for a token's groups; one that needs more has no group list
constexpr DWORD kNameSize = 512;  // bytes of a group's name and of its domain
namespace {

struct HandleCloser {
    void operator()(void *handle) const { CloseHandle(handle); }
};
using OpenToken = std::unique_ptr<void, HandleCloser>;

} // namespace

static bool addGroup(ALA_groupSIDList **list, const char *givenName, const char *givenDomain) {
    Malloced<ALA_groupSIDList> node = makeZeroed<ALA_groupSIDList>();
    Malloced<char> name(_strdup(givenName));
    Malloced<char> domain(_strdup(givenDomain));
    if (node == nullptr || name == nullptr || domain == nullptr)
        return false;
    *node = {name.release(), domain.release(), *list};
    *list = node.release();
    return true;
}

// Puts one group of the token into the list if it is of a kind that counts.  False when memory runs out.
static bool addTokenGroup(ALA_groupSIDList **list, PSID sid, const char *computer) {
    char name[kNameSize] = "";
    char domain[kNameSize] = "";
    DWORD nameSize = sizeof name;
    DWORD domainSize = sizeof domain;
    SID_NAME_USE use = SidTypeUser;
    if (LookupAccountSidA(nullptr, sid, name, &nameSize, domain, &domainSize, &use) == 0)
        return true; // a group without a name is nobody's
    if (use == SidTypeAlias)
        return addGroup(list, name, computer); // a local group counts in its machine's name
    return use != SidTypeGroup || addGroup(list, name, domain);
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
    const Malloced<TOKEN_GROUPS> groups(static_cast<TOKEN_GROUPS *>(std::malloc(kTokenSize)));
    DWORD needed = 0;
    if (groups == nullptr)
        return 1;
    if (GetTokenInformation(token.get(), TokenGroups, groups.get(), kTokenSize, &needed) == 0) {
        if (GetLastError() == ERROR_INSUFFICIENT_BUFFER)
            ALA_DETAIL(
                "the caller is in too many groups for the 512 bytes of their list: no group entry counts\n");
        return 1;
    }
    const SID_AND_ATTRIBUTES *first = groups->Groups;
    const bool complete =
        std::all_of(first, first + groups->GroupCount, [&](const SID_AND_ATTRIBUTES &group) {
            return addTokenGroup(inoutpp_gSidList, group.Sid, computer);
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

std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *,
                          ALA_groupSIDList **inoutpp_gSidList) {
    const char *name = nullptr;
    std::int32_t nameLength = 0;
    if (const std::int32_t result = ALA__SeparateSimpleName(&inp_msACL->name, &name, &nameLength);
        result != 0)
        return result;
    const StatusList status;
    Malloced<char> domain;
    if (GENU_ExtractDistNameString(status, TextOut(domain), nullptr, &inp_msACL->domain, 0) != 0)
        return 1;
    if (domain == nullptr || *domain == '\0')
        return 1; // without a domain the entry's group is nobody's
    for (const ALA_groupSIDList *group = *inoutpp_gSidList; group != nullptr; group = group->next)
        if (equalsIgnoringCase(group->user, name, static_cast<std::size_t>(nameLength)) &&
            equalsIgnoringCase(group->domainName, domain.get(), std::strlen(domain.get())))
            return 0;
    return 1;
}
