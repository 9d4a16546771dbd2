#include "ala/access/acl.h"

#include <cstring>

#include "ala/access/domain.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "service/text/text.h"

using namespace qvledger;

constexpr std::int32_t kPrivilegeNone = 1;
constexpr std::int32_t kPrivilegeRead = 2;
constexpr std::int32_t kPrivilegeAll = 3;

// What an entry names that does not admit the caller.
static void logEntry(STF_l__hdr *status, const GEN_eACL &entry) {
    static constexpr const char *kKinds[] = {"any user", "the user", "the group"};
    const auto kind = static_cast<std::uint32_t>(entry.nameType_d);
    Malloced<char> name;
    Malloced<char> domain;
    SEC_domType_t domainType = 0;
    static_cast<void>(GENU_ExtractSimpleName(status, TextOut(name), &entry.name, 0));
    static_cast<void>(GENU_ExtractDistNameString(status, TextOut(domain), &domainType, &entry.domain, 0));
    ALA_DETAIL("an entry does not admit the caller: %s \"%s\" of the domain \"%s\", type %u, level %d\n",
               kind < std::size(kKinds) ? kKinds[kind] : "no kind of name", name != nullptr ? name.get() : "",
               domain != nullptr ? domain.get() : "", domainType, entry.privilegeLevel_d);
}

std::int32_t ALA__AccountingAuthorized(STF_l__hdr *inoutp_status, const GEN_eACL *inp_accessControlList,
                                       const ALA_credential_t *inp_userInfo,
                                       std::int32_t *outp_booleanResult) {
    *outp_booleanResult = 0;
    if (inp_accessControlList == nullptr)
        return 1;
    const std::int32_t level = inp_accessControlList->privilegeLevel_d;
    if (level != kPrivilegeNone && level != kPrivilegeRead && level != kPrivilegeAll)
        return 1;

    ALA_groupSIDList *groups = nullptr;
    if (level != kPrivilegeNone &&
        ALA__MSACLMatch(inoutp_status, inp_accessControlList, inp_userInfo, &groups) == 0)
        *outp_booleanResult = 1;
    ALA__ClearGroupSIDList(&groups);
    if (*outp_booleanResult == 0 && LOG_Wants(LOG_DETAIL))
        logEntry(inoutp_status, *inp_accessControlList);
    return 0;
}

static std::int32_t matchDomain(STF_l__hdr *status, const GEN_eACL *msACL,
                                const ALA_credential_t *credential) {
    std::int32_t matched = 1;
    const std::int32_t result = _ALA_EACL_DomainMatch(status, credential, &msACL->domain, &matched);
    return result != 0 ? result : matched;
}

std::int32_t ALA__MSACLMatch(STF_l__hdr *inoutp_status, const GEN_eACL *inp_msACL,
                             const ALA_credential_t *inp_credential, ALA_groupSIDList **inoutpp_gSidList) {
    Malloced<char> name; // null means that the entry has no name
    static_cast<void>(GENU_ExtractSimpleName(inoutp_status, TextOut(name), &inp_msACL->name, 0));
    if (name == nullptr && inp_msACL->nameType_d != kNameAnyUser)
        return ALA_FAIL(1, "ALA__MSACLMatch: Invalid ACL: 0\n");
    const char *user = inp_credential->u.oncMsCred.user;
    if (user == nullptr)
        return ALA_FAIL(1, "ALA__MSACLMatch: Invalid user name in credential: 0\n");

    switch (inp_msACL->nameType_d) {
    case kNameAnyUser:
        return matchDomain(inoutp_status, inp_msACL, inp_credential);
    case kNameUser: {
        const std::int32_t differs = _stricmp(user, name.get());
        return differs != 0 ? differs : matchDomain(inoutp_status, inp_msACL, inp_credential);
    }
    case kNameGroup: {
        const std::int32_t result = _ALA_CreateGroupSIDList(inp_credential, inoutpp_gSidList);
        return result != 0 ? result : _ALA_MSingrp(inp_msACL, inp_credential, inoutpp_gSidList);
    }
    default:
        return 1;
    }
}

std::int32_t ALA__SeparateSimpleName(const GEN_simpleName *inp_serverName, const char **outp_val,
                                     std::int32_t *outp_len) {
    switch (inp_serverName->choice) {
    case GEN_ISO_646_IRV:
    case GEN_CCITT_T_61:
        *outp_val = inp_serverName->u.iso_646_irv;
        *outp_len = static_cast<std::int32_t>(strnlen(*outp_val, sizeof inp_serverName->u.iso_646_irv));
        return 0;
    case GEN_ISO_LATIN1:
    case GEN_ISO_UCS_2:
    case GEN_OTHER_CODE_SET: // all three begin with the length and the bytes
        *outp_val = reinterpret_cast<const char *>(inp_serverName->u.iso_latin1._value);
        *outp_len = inp_serverName->u.iso_latin1.length;
        return 0;
    default:
        return 1;
    }
}
