#include "ala/access/entry.h"

#include <cstring>
#include <iterator>
#include <optional>

#include "ala/access/domain.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/render/value_types.h"
#include "service/text/text.h"

using namespace qvledger;

// The kinds of names in access list entries.
constexpr std::int32_t kAnyUser = 0;
constexpr std::int32_t kUser = 1;
constexpr std::int32_t kGroup = 2;

constexpr std::int32_t kPrivilegeNone = 1;
constexpr std::int32_t kPrivilegeRead = 2;
constexpr std::int32_t kPrivilegeAll = 3;

namespace {

// An access list entry.  Decodes its name and its domain on first use.
class Entry {
public:
    explicit Entry(const GEN_eACL &unpacked) : raw_(unpacked) {}

    std::int32_t kind() const { return raw_.nameType_d; }
    std::int32_t level() const { return raw_.privilegeLevel_d; }
    const GEN_simpleName &rawName() const { return raw_.name; }

    // Null if the name cannot be decoded.
    const char *name() {
        if (!name_)
            static_cast<void>(GENU_ExtractSimpleName(StatusList(), TextOut(name_.emplace()), &raw_.name, 0));
        return name_->get();
    }

    const EntryDomain &domain() { return domain_ ? *domain_ : domain_.emplace(raw_.domain); }

private:
    const GEN_eACL &raw_;
    std::optional<Malloced<char>> name_;
    std::optional<EntryDomain> domain_;
};

} // namespace

static void logRefusal(Entry &entry) {
    static constexpr const char *kKinds[] = {"any user", "the user", "the group"};
    const auto kind = static_cast<std::uint32_t>(entry.kind());
    const char *name = entry.name();
    const char *domain = entry.domain().text.get();
    ALA_DETAIL("an entry does not admit the caller: %s \"%s\" of the domain \"%s\", type %u, level %d\n",
               kind < std::size(kKinds) ? kKinds[kind] : "no kind of name", name != nullptr ? name : "",
               domain != nullptr ? domain : "", entry.domain().type, entry.level());
}

static std::int32_t matchGroup(Entry &entry, const ALA_groupSIDList *groups) {
    const char *name = nullptr;
    std::int32_t length = 0;
    if (ALA__SeparateSimpleName(&entry.rawName(), &name, &length) != 0)
        return 1;
    const char *domain = entry.domain().text.get();
    // An entry for a group without a domain matches no user.
    return !isEmpty(domain) && isListed(groups, name, static_cast<std::size_t>(length), domain) ? 0 : 1;
}

static std::int32_t match(Entry &entry, const ALA_credential_t &credential, ALA_groupSIDList **groups) {
    const std::int32_t kind = entry.kind();
    const char *user = credential.u.oncMsCred.user;
    if (kind != kAnyUser && entry.name() == nullptr)
        return ALA_FAIL(1, "ALA__MSACLMatch: Invalid ACL: 0\n");
    if (user == nullptr)
        return ALA_FAIL(1, "ALA__MSACLMatch: Invalid user name in credential: 0\n");
    std::int32_t differs = kind == kAnyUser ? 0 : 1; // an unknown kind matches no user
    if (kind == kUser)
        differs = _stricmp(user, entry.name());
    else if (kind == kGroup)
        differs = _ALA_CreateGroupSIDList(&credential, groups);
    if (differs != 0)
        return differs;
    if (kind == kGroup)
        return matchGroup(entry, *groups);
    std::int32_t matched = 1; // stays 1 if the domain cannot be decoded
    static_cast<void>(matchDomain(credential, entry.domain(), &matched));
    return matched;
}

static std::int32_t evaluate(Entry &entry, const ALA_credential_t &credential, ALA_groupSIDList **groups,
                             std::int32_t *granted) {
    const std::int32_t level = entry.level();
    *granted = 0;
    if (level != kPrivilegeNone && level != kPrivilegeRead && level != kPrivilegeAll)
        return 1;
    if (level != kPrivilegeNone && match(entry, credential, groups) == 0)
        *granted = 1;
    else if (LOG_Wants(LOG_DETAIL))
        logRefusal(entry);
    return 0;
}

ALA_retCode_t qvledger::evaluateEntry(const std::uint8_t *packed, std::int32_t length, AS_attrValType_t type,
                                      Caller &caller, std::int32_t *granted) {
    const StatusList status;
    void *value = nullptr;
    AS_attrValDesc_t description = {};
    if (type != AS_ACCESS_LIST_ENTRY || // other types do not unpack to GEN_eACL
        ODP_UnpackAV(status, length, packed, type, &value, &description) != 0)
        return ALA_A_ODPUNPACK_ERROR;
    auto *unpacked = static_cast<GEN_eACL *>(value);
    Entry entry(*unpacked);
    const bool isBad = *granted == 0 && evaluate(entry, caller.credential, &caller.groups, granted) != 0;
    GEN_DeleteExtACL(status, unpacked, nullptr);
    return isBad ? ALA_A_ODPUNPACK_ERROR : ALA_N_NORMAL;
}

std::int32_t ALA__AccountingAuthorized(STF_l__hdr *, const GEN_eACL *inp_accessControlList,
                                       const ALA_credential_t *inp_userInfo,
                                       std::int32_t *outp_booleanResult) {
    *outp_booleanResult = 0;
    if (inp_accessControlList == nullptr)
        return 1;
    Entry entry(*inp_accessControlList);
    ALA_groupSIDList *groups = nullptr;
    const std::int32_t result = evaluate(entry, *inp_userInfo, &groups, outp_booleanResult);
    ALA__ClearGroupSIDList(&groups);
    return result;
}

std::int32_t ALA__MSACLMatch(STF_l__hdr *, const GEN_eACL *inp_msACL, const ALA_credential_t *inp_credential,
                             ALA_groupSIDList **inoutpp_gSidList) {
    Entry entry(*inp_msACL);
    return match(entry, *inp_credential, inoutpp_gSidList);
}

std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *,
                          ALA_groupSIDList **inoutpp_gSidList) {
    Entry entry(*inp_msACL);
    return matchGroup(entry, *inoutpp_gSidList);
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
    case GEN_OTHER_CODE_SET: // the members of all three choices begin with the length and the bytes
        *outp_val = reinterpret_cast<const char *>(inp_serverName->u.iso_latin1._value);
        *outp_len = inp_serverName->u.iso_latin1.length;
        return 0;
    default:
        return 1;
    }
}
