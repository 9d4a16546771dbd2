#include "ala/registration/environment.h"

#include <cstdlib>
#include <cstring>

#include "ala/access/caller.h"
#include "ala/base/concatenate.h"
#include "ala/base/owners.h"
#include "ala/base/registry_keys.h"
#include "ala/base/trace.h"
#include "platform/registry_key.h"

using namespace qvledger;

void qvledger::findHostDomain() {
    static_cast<void>(ALA__GetHostDomain(nullptr));
}

static const char *servicePrefix(std::uint32_t serverType) {
    if (serverType == kServerTypeSpooler)
        return kSpoolerPrefix;
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
    static_cast<void>(_putenv(assignment.get())); // a setting with an invalid name is ignored
    return true;
}

std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName) {
    const Malloced<char> head(_ALA_AddChar(kServicesKey, inp_serviceName));
    const Malloced<char> path(head != nullptr ? _ALA_AddChar(head.get(), kEnvironmentKey) : nullptr);
    if (path == nullptr)
        return -1;
    OpenKey key;
    LONG opened = openKey(path.get(), KEY_READ, key);
    if (opened != ERROR_SUCCESS)
        opened = openKey(kCommonEnvironmentKey, KEY_READ, key);
    if (opened != ERROR_SUCCESS) {
        logRegistryTrouble();
        if (opened != ERROR_FILE_NOT_FOUND && *OS_RegistryTrouble() == '\0')
            ALA_DETAIL("the settings for %s cannot be read, error %d\n", path.get(),
                       static_cast<std::int32_t>(opened));
        else if (*OS_RegistryTrouble() == '\0')
            ALA_DETAIL("%s does not exist, or has neither the key %s nor one for all servers\n",
                       OS_RegistryPath(), path.get());
        return -1;
    }

    for (DWORD index = 0;; ++index) {
        char achValue[kSettingSize] = "";
        char envValue[kSettingSize + 1] = ""; // room for a NUL, because the data may lack it
        DWORD nameSize = kSettingSize;
        DWORD dataSize = kSettingSize;
        DWORD type = 0;
        const LONG result = RegEnumValueA(key.get(), index, achValue, &nameSize, nullptr, &type,
                                          reinterpret_cast<BYTE *>(envValue), &dataSize);
        if (result == ERROR_NO_MORE_ITEMS)
            return 0;
        if (result != ERROR_SUCCESS)
            return ALA_FAIL(-1, "value %u of the settings for %s cannot be used, error %d",
                            static_cast<std::uint32_t>(index) + 1, path.get(),
                            static_cast<std::int32_t>(result));
        if (!setVariable(achValue, envValue))
            return -1;
    }
}
