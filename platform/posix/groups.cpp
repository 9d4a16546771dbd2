// The groups of the calling process, and the accounts of security identifiers.
#include "platform/posix/groups.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

#include <unistd.h>

#include "platform/posix/account.h"
#include "platform/posix/guard.h"
#include "platform/posix/name_buffer.h"
#include "platform/posix/sid.h"

constexpr DWORD kGroupEnabled = 7; // mandatory, enabled by default, enabled

static char gProcess; // stands for this process
static char gToken;   // stands for its token

// The real group and the supplementary ones, each once.  The effective group is left out: a set-group-id bit
// may have lent it.
static std::optional<std::vector<gid_t>> callersGroups() {
    const int count = getgroups(0, nullptr);
    if (count < 0)
        return std::nullopt;
    std::vector<gid_t> groups(static_cast<std::size_t>(count) + 1);
    groups[0] = getgid();
    if (getgroups(count, groups.data() + 1) != count)
        return std::nullopt;
    std::sort(groups.begin(), groups.end());
    groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
    return groups;
}

bool writeTokenGroups(const std::vector<gid_t> &in_groups, void *outp_info, DWORD in_length,
                      DWORD *outp_needed) {
    const std::size_t sidsAt = offsetof(TOKEN_GROUPS, Groups) + in_groups.size() * sizeof(SID_AND_ATTRIBUTES);
    const std::size_t needed =
        std::max(sidsAt + in_groups.size() * sizeof(Sid), sizeof(TOKEN_GROUPS)); // all of the record is there
    *outp_needed = static_cast<DWORD>(needed);
    if (outp_info == nullptr || needed > in_length)
        return false;
    auto *info = static_cast<unsigned char *>(outp_info);
    const auto count = static_cast<DWORD>(in_groups.size());
    std::memcpy(info, &count, sizeof count);
    for (std::size_t i = 0; i < in_groups.size(); ++i) {
        const Sid sid = makeSid(kSidOfGroup, in_groups[i]);
        unsigned char *place = info + sidsAt + i * sizeof sid;
        std::memcpy(place, &sid, sizeof sid);
        const SID_AND_ATTRIBUTES row = {place, kGroupEnabled};
        std::memcpy(info + offsetof(TOKEN_GROUPS, Groups) + i * sizeof row, &row, sizeof row);
    }
    return true;
}

static std::optional<Sid> readSid(const void *givenSid) {
    Sid sid = {};
    std::memcpy(&sid, givenSid, offsetof(Sid, subAuthority));
    const Sid ours = makeSid(0, 0);
    if (std::memcmp(&sid, &ours, offsetof(Sid, subAuthority)) != 0)
        return std::nullopt; // one of another kind may be shorter than ours
    std::memcpy(&sid, givenSid, sizeof sid);
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

HANDLE GetCurrentProcess() {
    return &gProcess;
}

BOOL OpenProcessToken(HANDLE in_process, DWORD in_access, HANDLE *outp_token) {
    if (in_process != &gProcess)
        return failWith(ERROR_INVALID_HANDLE);
    if (in_access != TOKEN_QUERY)
        return failWith(ERROR_ACCESS_DENIED); // a token can only be asked
    *outp_token = &gToken;
    return 1;
}

BOOL GetTokenInformation(HANDLE in_token, TOKEN_INFORMATION_CLASS in_class, void *outp_info, DWORD in_length,
                         DWORD *outp_needed) {
    return guarded([&] {
        if (in_token != &gToken)
            return failWith(ERROR_INVALID_HANDLE);
        if (in_class != TokenGroups || outp_needed == nullptr)
            return failWith(ERROR_INVALID_PARAMETER);
        const std::optional<std::vector<gid_t>> groups = callersGroups();
        if (!groups)
            return failWith(ERROR_ACCESS_DENIED);
        if (!writeTokenGroups(*groups, outp_info, in_length, outp_needed))
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        return 1;
    });
}

BOOL CloseHandle(HANDLE in_handle) {
    return in_handle == &gToken || in_handle == &gProcess ? 1 : failWith(ERROR_INVALID_HANDLE);
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
            nameOut.tellNeeded();
            domainOut.tellNeeded();
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        }
        nameOut.write();
        domainOut.write();
        *outp_use = found->use;
        return 1;
    });
}

} // extern "C"
