#include "ala/driver.h"

#include <cstdlib>
#include <cstring>

#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "platform/registry_key.h"

using namespace qvledger;

constexpr std::size_t kValueSize = 260; // bytes of a value's name and of its data

static const char *servicePrefix(std::uint32_t serverType) {
    if (serverType == kServerTypeSpooler)
        return "qv spl ";
    return serverType == kServerTypeOther ? "qv spv " : nullptr;
}

std::int32_t ALA__GetServiceName(const char *inp_serverName, std::uint32_t in_serverType,
                                 char **outpp_serviceName) {
    if (outpp_serviceName == nullptr)
        return -1;
    *outpp_serviceName = nullptr;
    const char *prefix = servicePrefix(in_serverType);
    if (prefix == nullptr)
        return -1;
    *outpp_serviceName = _ALA_AddChar(prefix, inp_serverName);
    return *outpp_serviceName != nullptr ? 0 : -1;
}

static bool setVariable(const char *name, const char *data) {
    const Malloced<char> head(_ALA_AddChar(name, "="));
    if (head == nullptr)
        return false;
    const Malloced<char> assignment(_ALA_AddChar(head.get(), data));
    if (assignment == nullptr)
        return false;
    static_cast<void>(_putenv(assignment.get())); // a name that is none sets nothing
    return true;
}

std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName) {
    const Malloced<char> head(_ALA_AddChar("SYSTEM\\CurrentControlSet\\Services\\", inp_serviceName));
    const Malloced<char> path(head != nullptr ? _ALA_AddChar(head.get(), "\\Environment") : nullptr);
    if (path == nullptr)
        return -1;
    OpenKey key;
    if (openKey(path.get(), KEY_READ, key) != ERROR_SUCCESS &&
        openKey("SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment", KEY_READ, key) != ERROR_SUCCESS) {
        logRegistryTrouble();
        if (*OS_RegistryTrouble() == '\0')
            ALA_DETAIL("%s is not there, or has no key %s and none for all servers\n", OS_RegistryPath(),
                       path.get());
        return -1;
    }

    for (DWORD index = 0;; ++index) {
        char achValue[kValueSize] = "";
        char envValue[kValueSize + 1] = ""; // data may come without a terminator
        DWORD nameSize = kValueSize;
        DWORD dataSize = kValueSize;
        DWORD type = 0;
        const LONG result = RegEnumValueA(key.get(), index, achValue, &nameSize, nullptr, &type,
                                          reinterpret_cast<BYTE *>(envValue), &dataSize);
        if (result == ERROR_NO_MORE_ITEMS)
            return 0;
        if (result != ERROR_SUCCESS)
            return ALA_FAIL(-1, "value %u of the settings for %s cannot be taken, error %d",
                            static_cast<std::uint32_t>(index) + 1, path.get(),
                            static_cast<std::int32_t>(result));
        if (!setVariable(achValue, envValue))
            return -1;
    }
}
