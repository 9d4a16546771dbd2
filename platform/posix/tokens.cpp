#include "platform/posix/token_groups.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

#include <unistd.h>

#include "platform/posix/guard.h"
#include "platform/posix/sid.h"

using namespace qvledger;

constexpr DWORD kGroupEnabled = 7; // flags: mandatory, enabled by default, enabled

static char gProcess; // this variable's address is the process's handle
static char gToken;   // this variable's address is the token's handle

// Returns the real group and the supplementary groups, each once; nothing on failure.  Skips the effective
// group, because a set-group-id bit may have lent it.
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

bool qvledger::writeTokenGroups(const std::vector<gid_t> &groups, void *buffer, DWORD length,
                                DWORD *neededSize) {
    const std::size_t sidsAt = offsetof(TOKEN_GROUPS, Groups) + groups.size() * sizeof(SID_AND_ATTRIBUTES);
    const std::size_t needed =
        std::max(sidsAt + groups.size() * sizeof(Sid), sizeof(TOKEN_GROUPS)); // at least a whole TOKEN_GROUPS
    *neededSize = static_cast<DWORD>(needed);
    if (buffer == nullptr || needed > length)
        return false;
    auto *info = static_cast<unsigned char *>(buffer);
    const auto count = static_cast<DWORD>(groups.size());
    std::memcpy(info, &count, sizeof count);
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const Sid sid = makeSid(kSidOfGroup, groups[i]);
        unsigned char *place = info + sidsAt + i * sizeof sid;
        std::memcpy(place, &sid, sizeof sid);
        const SID_AND_ATTRIBUTES row = {place, kGroupEnabled};
        std::memcpy(info + offsetof(TOKEN_GROUPS, Groups) + i * sizeof row, &row, sizeof row);
    }
    return true;
}

extern "C" {

HANDLE GetCurrentProcess() {
    return &gProcess;
}

BOOL OpenProcessToken(HANDLE in_process, DWORD in_access, HANDLE *outp_token) {
    if (in_process != &gProcess)
        return failWith(ERROR_INVALID_HANDLE);
    if (in_access != TOKEN_QUERY)
        return failWith(ERROR_ACCESS_DENIED); // a token can only be queried
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

BOOL CloseHandle(HANDLE handle) {
    return handle == &gToken || handle == &gProcess ? 1 : failWith(ERROR_INVALID_HANDLE);
}

} // extern "C"
