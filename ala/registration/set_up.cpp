// What a server's set-up consists of, and what is wrong with it.
#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "ala/base/owners.h"
#include "ala/directory/scan.h"
#include "ala/driver.h"
#include "service/oid_table.h"

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

bool ALA__CheckRegistry(const char *inp_serverName, ALA__setUpWatch &inout_watch) {
    try {
        const std::string own =
            std::string("SYSTEM\\CurrentControlSet\\Services\\qv spl ") + inp_serverName + "\\Environment";
        const int hasOwn = checkKey(own.c_str(), nullptr, inout_watch);
        if (hasOwn == OS_REFUSED)
            return false;
        const char *ifAbsent =
            hasOwn == OS_DONE ? nullptr : "this key is not there, and the server has none of its own";
        const int hasCommon =
            checkKey("SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment", ifAbsent, inout_watch);
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
