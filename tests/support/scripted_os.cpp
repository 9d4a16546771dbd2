#include "tests/support/scripted_os.h"

#include <cstring>
#include <string>

#define SCRIPTED(call, result, parameters, arguments)                                                        \
    std::function<decltype(::call)> script::call;                                                            \
    extern "C" result __real_##call parameters;                                                              \
    extern "C" result __wrap_##call parameters;                                                              \
    result __wrap_##call parameters {                                                                        \
        return script::call ? script::call arguments : __real_##call arguments;                              \
    }

SCRIPTED(GetVersionExA, BOOL, (OSVERSIONINFOA * version), (version))
SCRIPTED(GetUserNameA, BOOL, (char *name, DWORD *size), (name, size))
SCRIPTED(LookupAccountNameA, BOOL,
         (const char *system, const char *name, PSID sid, DWORD *sidSize, char *domain, DWORD *domainSize,
          SID_NAME_USE *use),
         (system, name, sid, sidSize, domain, domainSize, use))
SCRIPTED(LookupAccountSidA, BOOL,
         (const char *system, PSID sid, char *name, DWORD *nameSize, char *domain, DWORD *domainSize,
          SID_NAME_USE *use),
         (system, sid, name, nameSize, domain, domainSize, use))
SCRIPTED(OpenProcessToken, BOOL, (HANDLE process, DWORD access, HANDLE *token), (process, access, token))
SCRIPTED(GetTokenInformation, BOOL,
         (HANDLE token, TOKEN_INFORMATION_CLASS kind, void *info, DWORD length, DWORD *needed),
         (token, kind, info, length, needed))
SCRIPTED(GetComputerNameA, BOOL, (char *name, DWORD *size), (name, size))
SCRIPTED(LoadLibraryA, HMODULE, (const char *name), (name))
SCRIPTED(GetProcAddress, FARPROC, (HMODULE library, const char *name), (library, name))
SCRIPTED(OS_HasLentRights, int, (), ())
SCRIPTED(GENU_GetCurrentTime, std::int32_t,
         (STF_l__hdr * status, GEN_generalizedTime **time, std::int32_t reserved), (status, time, reserved))
SCRIPTED(GetACP, UINT, (), ())
SCRIPTED(_commit, int, (int fd), (fd))
SCRIPTED(_unlink, int, (const char *path), (path))
SCRIPTED(OS_IdentifyTarget, int, (const char *path, OS_fileIdentity *identity), (path, identity))
SCRIPTED(OS_KindOfOutput, OS_outputKind, (int fd), (fd))
SCRIPTED(OS_KnowsZone, int, (const char *zone), (zone))
SCRIPTED(OS_NotedSignal, int, (), ())
SCRIPTED(OS_SyncFolderOf, int, (int fd), (fd))

ScriptedUser::ScriptedUser(const char *userName, const char *domainBuffer)
    : name_(script::GetUserNameA,
            [user = std::string(userName)](char *buffer, DWORD *size) {
                *size = static_cast<DWORD>(user.size()) + 1;
                std::memcpy(buffer, user.c_str(), *size);
                return 1;
            }),
      account_(script::LookupAccountNameA,
               [domain = std::string(domainBuffer)](const char *, const char *, PSID, DWORD *, char *text,
                                                    DWORD *size, SID_NAME_USE *) {
                   const DWORD needed = static_cast<DWORD>(domain.size()) + 1;
                   if (*size < needed) {
                       *size = needed;
                       SetLastError(ERROR_INSUFFICIENT_BUFFER);
                       return 0;
                   }
                   std::memcpy(text, domain.c_str(), needed);
                   return 1;
               }) {}
