// Scripts that replace functions of platform/ and service/, for results that the real functions rarely have.
//
// The test programs are linked so that calls of the functions listed in tests/CMakeLists.txt come here first.
// A function without a script calls the real function.
#pragma once

#include <functional>
#include <type_traits>

#include "platform/os.h"
#include "service/clock.h"
#include "service/system.h"

// While it exists, replaces a function: Scripted user(script::GetUserNameA, [](char *, DWORD *) {...});
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
extern std::function<decltype(::GetACP)> GetACP;
extern std::function<decltype(::_commit)> _commit;
extern std::function<decltype(::_unlink)> _unlink;
extern std::function<decltype(::OS_IdentifyTarget)> OS_IdentifyTarget;
extern std::function<decltype(::OS_KindOfOutput)> OS_KindOfOutput;
extern std::function<decltype(::OS_KnowsZone)> OS_KnowsZone;
extern std::function<decltype(::OS_NotedSignal)> OS_NotedSignal;
extern std::function<decltype(::OS_SyncFolderOf)> OS_SyncFolderOf;

} // namespace script

// The real function, for scripts that change its result.
extern "C" decltype(::GENU_GetCurrentTime) __real_GENU_GetCurrentTime;

// Scripts the functions that find the name and domain of the user who runs the program.
class ScriptedUser {
public:
    ScriptedUser(const char *user, const char *domain);

private:
    Scripted<decltype(::GetUserNameA)> name_;
    Scripted<decltype(::LookupAccountNameA)> account_;
};
