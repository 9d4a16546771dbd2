// What a server's set-up consists of, and what is wrong with it.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "ala/base/owners.h"
#include "ala/directory/scan.h"
#include "ala/driver.h"
#include "platform/registry_key.h"
#include "service/oid/oid_table.h"

using namespace qvledger;

constexpr std::size_t kPlaceSize = 4096 + 256; // a path, a line and a reason

// Tells where a key stands.  OS_DONE, OS_TAKEN or OS_REFUSED, as OS_PlaceOfKey.
static int checkKey(const char *key, const char *whatIfAbsent, ALA__setUpWatch &watch) {
    char place[kPlaceSize];
    const int found = OS_PlaceOfKey(key, place, sizeof place);
    if (found == OS_DONE)
        watch.part("registry key", key, place, nullptr);
    else if (found == OS_TAKEN)
        watch.part("registry key", key, whatIfAbsent != nullptr ? place : "", whatIfAbsent);
    else
        watch.part("registry key", key, "",
                   *OS_RegistryTrouble() != '\0' ? OS_RegistryTrouble() : "out of memory");
    return found;
}

// What keeps the loader of the service environment from a value of the key that is used, or the programs from
// what they need.  An empty text: nothing.
static std::string faultOfValues(const char *path, bool needsRoot) {
    constexpr DWORD kLoaded = 260; // bytes that the loader takes of a value's name and of its data
    OpenKey key;
    if (openKey(path, KEY_READ, key) != ERROR_SUCCESS)
        return "the key cannot be read";
    std::string last;
    for (DWORD index = 0;; ++index) {
        char name[kLoaded] = "";
        BYTE data[kLoaded] = {};
        DWORD nameSize = kLoaded, dataSize = kLoaded, type = 0;
        const LONG result = RegEnumValueA(key.get(), index, name, &nameSize, nullptr, &type, data, &dataSize);
        if (result == ERROR_NO_MORE_ITEMS)
            break;
        if (result == ERROR_MORE_DATA)
            return "the value " + (last.empty() ? "that comes first" : "behind " + last) + " is too long";
        if (result != ERROR_SUCCESS)
            return "error " + std::to_string(result) + " of the value with the number " +
                   std::to_string(index);
        last = name;
    }
    DWORD type = 0;
    if (!needsRoot)
        return "";
    if (RegQueryValueExA(key.get(), "QV_ROOT", nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS)
        return std::getenv("QV_ROOT") != nullptr ? "" : "it has no value QV_ROOT";
    return type == REG_SZ || type == REG_EXPAND_SZ ? "" : "QV_ROOT is no text";
}

// Tells where a key stands, and what is wrong with its values if it is there.  As checkKey.
static int checkSettings(const char *key, const char *whatIfAbsent, bool needsRoot, ALA__setUpWatch &watch) {
    char place[kPlaceSize];
    if (OS_PlaceOfKey(key, place, sizeof place) != OS_DONE)
        return checkKey(key, whatIfAbsent, watch);
    const std::string fault = faultOfValues(key, needsRoot);
    watch.part("registry key", key, place, fault.empty() ? nullptr : fault.c_str());
    return OS_DONE;
}

bool ALA__CheckRegistry(const char *inp_serverName, bool in_needsRoot, ALA__setUpWatch &inout_watch) {
    constexpr const char *kCommon = "SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment";
    try {
        const std::string own =
            std::string("SYSTEM\\CurrentControlSet\\Services\\qv spl ") + inp_serverName + "\\Environment";
        const int hasOwn = checkSettings(own.c_str(), nullptr, in_needsRoot, inout_watch);
        if (hasOwn == OS_REFUSED)
            return false;
        const char *ifAbsent = "this key is not there, and the server has none of its own";
        const int hasCommon = hasOwn == OS_DONE ? checkKey(kCommon, nullptr, inout_watch)
                                                : checkSettings(kCommon, ifAbsent, in_needsRoot, inout_watch);
        checkKey("System\\CurrentControlSet\\Enum\\Root\\LEGACY_NETLOGON\\0000", nullptr, inout_watch);
        checkKey("SYSTEM\\CurrentControlSet\\Services\\LanmanWorkstation\\Parameters", nullptr, inout_watch);
        return hasOwn == OS_DONE || hasCommon == OS_DONE;
    } catch (const std::bad_alloc &) {
        inout_watch.part("registry key", inp_serverName, "", "out of memory");
        return false;
    }
}

bool ALA__CheckLogDirectory(const char *inp_path, ALA__setUpWatch &inout_watch) {
    const Directory directory(SYSU_Opendir(inp_path));
    const int error = errno;
    const char *fault = directory == nullptr ? std::strerror(error) : nullptr;
    inout_watch.part("log directory", inp_path, inp_path, fault);
    return fault == nullptr;
}

bool ALA__CheckOidTable(const char *inp_path, ALA__setUpWatch &inout_watch) {
    try {
        const std::string path = std::string(inp_path) + "/oids";
        OidTable table;
        const OidTable::State state = table.load(path.c_str(), OidTable::Kind::Identifiers);
        const std::string fault = state == OidTable::State::Absent ? path + ": no such file" : table.whyBad();
        inout_watch.part("OID table", inp_path, path.c_str(),
                         state != OidTable::State::Loaded ? fault.c_str() : nullptr);
        return state == OidTable::State::Loaded;
    } catch (const std::bad_alloc &) {
        inout_watch.part("OID table", inp_path, "", "out of memory");
        return false;
    }
}
