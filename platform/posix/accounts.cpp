#include "platform/os.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>

#include <unistd.h>

#include "platform/posix/computer_name.h"
#include "platform/posix/guard.h"
#include "platform/posix/name_buffer.h"
#include "platform/posix/name_service.h"
#include "platform/posix/sid.h"

using namespace qvledger;

// Finds an account by name.  Tries the calling user's account first, because the name may be the one that
// GetUserNameA returned.  That name lacks the domain, so it may be the full name of no account or of another
// account.
static std::optional<Account> findAccount(const char *name) {
    std::optional<Account> caller = accountOfId(getuid());
    if (caller && caller->name.name == name)
        return caller;
    return accountOfName(name);
}

static std::optional<Sid> readSid(const void *bytes) {
    Sid sid = {};
    std::memcpy(&sid, bytes, offsetof(Sid, subAuthority));
    const Sid ours = makeSid(0, 0);
    if (std::memcmp(&sid, &ours, offsetof(Sid, subAuthority)) != 0)
        return std::nullopt; // another kind of SID, which may be shorter
    std::memcpy(&sid, bytes, sizeof sid);
    return sid;
}

namespace {

struct NamedSid {
    AccountName name;
    SID_NAME_USE use;
};

} // namespace

static std::optional<NamedSid> accountOfSid(const Sid &sid) {
    const auto [kind, id] = sid.subAuthority;
    if (kind == kSidOfUser) {
        if (const std::optional<Account> account = accountOfId(id))
            return NamedSid{account->name, SidTypeUser};
    } else if (kind == kSidOfGroup) {
        if (const std::optional<AccountName> group = groupOfId(id))
            return NamedSid{*group, group->domain.empty() ? SidTypeAlias : SidTypeGroup};
    }
    return std::nullopt;
}

extern "C" {

BOOL GetUserNameA(char *outp_name, DWORD *inoutp_size) {
    return guarded([&] {
        if (inoutp_size == nullptr)
            return failWith(ERROR_INVALID_PARAMETER);
        const std::optional<Account> caller = accountOfId(getuid());
        if (!caller)
            return failWith(ERROR_NONE_MAPPED);
        NameBuffer out(outp_name, inoutp_size, caller->name.name);
        const bool fits = out.fits();
        if (fits)
            out.write();
        out.setNeeded(); // GetUserNameA's size counts the NUL on success too
        return fits ? 1 : failWith(ERROR_INSUFFICIENT_BUFFER);
    });
}

BOOL LookupAccountNameA(const char *, const char *inp_name, PSID outp_sid, DWORD *inoutp_sidSize,
                        char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use) {
    return guarded([&] {
        if (inp_name == nullptr || inoutp_sidSize == nullptr || inoutp_domainSize == nullptr ||
            outp_use == nullptr)
            return failWith(ERROR_INVALID_PARAMETER);
        const std::optional<Account> account = findAccount(inp_name);
        if (!account)
            return failWith(ERROR_NONE_MAPPED);
        const Sid sid = makeSid(kSidOfUser, account->id);
        // The domain of a local account is the computer's name.
        const std::string domain = account->name.domain.empty() ? computerName() : account->name.domain;
        NameBuffer domainOut(outp_domain, inoutp_domainSize, domain);
        const bool fits = outp_sid != nullptr && *inoutp_sidSize >= sizeof sid && domainOut.fits();
        *inoutp_sidSize = sizeof sid;
        if (!fits) {
            domainOut.setNeeded();
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        }
        std::memcpy(outp_sid, &sid, sizeof sid);
        domainOut.write();
        *outp_use = SidTypeUser;
        return 1;
    });
}

BOOL LookupAccountSidA(const char *, PSID inp_sid, char *outp_name, DWORD *inoutp_nameSize, char *outp_domain,
                       DWORD *inoutp_domainSize, SID_NAME_USE *outp_use) {
    return guarded([&] {
        if (inp_sid == nullptr || inoutp_nameSize == nullptr || inoutp_domainSize == nullptr ||
            outp_use == nullptr)
            return failWith(ERROR_INVALID_PARAMETER);
        const std::optional<Sid> sid = readSid(inp_sid);
        const std::optional<NamedSid> found = sid ? accountOfSid(*sid) : std::nullopt;
        if (!found)
            return failWith(ERROR_NONE_MAPPED);
        const std::string domain = found->name.domain.empty() ? computerName() : found->name.domain;
        NameBuffer nameOut(outp_name, inoutp_nameSize, found->name.name);
        NameBuffer domainOut(outp_domain, inoutp_domainSize, domain);
        if (!nameOut.fits() || !domainOut.fits()) {
            nameOut.setNeeded();
            domainOut.setNeeded();
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        }
        nameOut.write();
        domainOut.write();
        *outp_use = found->use;
        return 1;
    });
}

} // extern "C"
