// Who is calling, and on which machine.
#include <cstdio>
#include <cstring>

#include <sys/utsname.h>
#include <unistd.h>

#include "platform/posix/account.h"
#include "platform/posix/guard.h"
#include "platform/posix/name_buffer.h"
#include "platform/posix/sid.h"

static thread_local DWORD gLastError = 0;

// The caller asks for the user part that GetUserNameA gave, which need not be the full name of any account,
// or may be that of another one: so the caller's own account comes first.
static std::optional<Account> findAccount(const char *name) {
    std::optional<Account> caller = accountOfId(getuid());
    if (caller && caller->name.name == name)
        return caller;
    return accountOfName(name);
}

extern "C" {

DWORD GetLastError() {
    return gLastError;
}
void SetLastError(DWORD in_error) {
    gLastError = in_error;
}

BOOL GetVersionExA(OSVERSIONINFOA *inoutp_version) {
    if (inoutp_version == nullptr || inoutp_version->dwOSVersionInfoSize != sizeof *inoutp_version)
        return failWith(ERROR_INSUFFICIENT_BUFFER);
    OSVERSIONINFOA version = {sizeof version, 0, 0, 0, VER_PLATFORM_WIN32_NT, ""};
    if (utsname system; uname(&system) == 0) // parts that a release lacks stay 0
        static_cast<void>(std::sscanf(system.release, "%9u.%9u.%9u", &version.dwMajorVersion,
                                      &version.dwMinorVersion, &version.dwBuildNumber));
    *inoutp_version = version;
    return 1;
}

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
        out.tellNeeded(); // this size counts the NUL on success too
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
        // A local account's domain is its machine.
        const std::string domain = account->name.domain.empty() ? computerName() : account->name.domain;
        NameBuffer domainOut(outp_domain, inoutp_domainSize, domain);
        const bool fits = outp_sid != nullptr && *inoutp_sidSize >= sizeof sid && domainOut.fits();
        *inoutp_sidSize = sizeof sid;
        if (!fits) {
            domainOut.tellNeeded();
            return failWith(ERROR_INSUFFICIENT_BUFFER);
        }
        std::memcpy(outp_sid, &sid, sizeof sid);
        domainOut.write();
        *outp_use = SidTypeUser;
        return 1;
    });
}

BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size) {
    return guarded([&] {
        const std::string name = computerName();
        if (inoutp_size == nullptr || name.empty())
            return failWith(ERROR_INVALID_PARAMETER);
        NameBuffer out(outp_name, inoutp_size, name);
        if (!out.fits()) {
            out.tellNeeded();
            return failWith(ERROR_BUFFER_OVERFLOW);
        }
        out.write();
        return 1;
    });
}

} // extern "C"
