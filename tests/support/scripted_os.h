// Scripted calls in the place of single calls of the system, to drive the roads that a real one rarely takes.
//
// The test programs are linked so that the calls listed in tests/CMakeLists.txt come here first.  A call
// without a script goes on to the real one.
#pragma once

#include <functional>
#include <type_traits>

#include "platform/os.h"
#include "service/clock.h"
#include "service/system.h"

// Puts a script in force for the length of a block: Scripted user(script::GetUserNameA, [](char *, DWORD *)
// {...});
template <class Function>
class Scripted {
public:
    Scripted(std::function<Function> &slot, std::type_identity_t<std::function<Function>> script)
        : place_(slot) {
        place_ = std::move(script);
    }
    ~Scripted() { place_ = nullptr; }
    Scripted(const Scripted &) = delete;
    Scripted &operator=(const Scripted &) = delete;

private:
    std::function<Function> &place_;
};

namespace script {

extern std::function<decltype(::GetVersionExA)> GetVersionExA;
extern std::function<decltype(::GetUserNameA)> GetUserNameA;
extern std::function<decltype(::LookupAccountNameA)> LookupAccountNameA;
extern std::function<decltype(::LookupAccountSidA)> LookupAccountSidA;
extern std::function<decltype(::OpenProcessToken)> OpenProcessToken;
extern std::function<decltype(::GetTokenInformation)> GetTokenInformation;
extern std::function<decltype(::GetComputerNameA)> GetComputerNameA;
extern std::function<decltype(::LoadLibraryA)> LoadLibraryA;
extern std::function<decltype(::GetProcAddress)> GetProcAddress;
extern std::function<decltype(::OS_HasLentRights)> OS_HasLentRights;
extern std::function<decltype(::GENU_GetCurrentTime)> GENU_GetCurrentTime;
extern std::function<decltype(::_commit)> _commit;
extern std::function<decltype(::_stat)> _stat;
extern std::function<decltype(::_unlink)> _unlink;
extern std::function<decltype(::OS_KindOfOutput)> OS_KindOfOutput;
extern std::function<decltype(::OS_NotedSignal)> OS_NotedSignal;
extern std::function<decltype(::OS_SyncFolderOf)> OS_SyncFolderOf;

} // namespace script

// What a script of a time starts from: the real one, in memory that the service library can release.
extern "C" decltype(::GENU_GetCurrentTime) __real_GENU_GetCurrentTime;

// The calling user as the credential gathers it: account and domain.  Other calls stay real.
class ScriptedUser {
public:
    ScriptedUser(const char *user, const char *domain);

private:
    Scripted<decltype(::GetUserNameA)> name_;
    Scripted<decltype(::LookupAccountNameA)> account_;
};
