#include "tool/check/set_up_table.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "ala/driver/session.h"
#include "platform/registry_key.h"
#include "service/oid/oid_table.h"
#include "service/system.h"
#include "tool/check/fields.h"
#include "tool/exit_status.h"
#include "tool/messages.h"
#include "tool/rights.h"
#include "tool/server_session.h"

using namespace qvledger;

constexpr std::size_t kPlaceSize = 4096 + 256; // bytes of a path, a line number and a reason
constexpr std::string_view kRegistryKey = "registry key";

namespace {

// Writes the lines of the set-up table, and a message for each fault.
class SetUpLines {
public:
    // Hides paths that were examined with lent rights: the user may have no right to see them.
    explicit SetUpLines(bool partIsTheSystems) : hides_(partIsTheSystems && OS_HasLentRights() != 0) {}

    // Writes the line of a part of the set-up.  place: file and line, or a path.  fault: the reason; empty if
    // there is no fault.
    void part(std::string_view what, std::string_view value, std::string_view place, std::string_view fault) {
        const bool isPath = what != kRegistryKey; // key names are not secret
        if (hides_) {
            place = "";
            if (isPath)
                value = "";
            if (isPath && fault.find('/') != fault.npos)
                fault = "cannot be used";
        }
        writeFields({what, value, place, fault});
        if (!fault.empty())
            report(std::string(what), value, place, fault);
    }

private:
    static void report(std::string text, std::string_view value, std::string_view place,
                       std::string_view fault) {
        if (!value.empty() && !place.starts_with(value))
            text.append(" ").append(value);
        if (!place.empty() && !fault.starts_with(place))
            text.append(": ").append(place);
        std::fflush(stdout);
        DisplayMsg(kMsgCheckSetUp, text.append(": ").append(fault).c_str());
    }

    bool hides_;
};

} // namespace

// ---- The registry ----

// The reason why the settings of the key cannot be loaded or are incomplete.  Empty if there is no fault.
static std::string faultOfSettings(const char *path, bool needsRoot) {
    OpenKey key;
    if (openKey(path, KEY_READ, key) != ERROR_SUCCESS)
        return "the key cannot be read";
    std::string last;
    for (DWORD index = 0;; ++index) {
        char name[kSettingSize] = "";
        BYTE data[kSettingSize] = {};
        DWORD nameSize = kSettingSize, dataSize = kSettingSize, type = 0;
        const LONG result = RegEnumValueA(key.get(), index, name, &nameSize, nullptr, &type, data, &dataSize);
        if (result == ERROR_NO_MORE_ITEMS)
            break;
        if (result == ERROR_MORE_DATA)
            return last.empty() ? "the first value is too long" : "the value after " + last + " is too long";
        if (result != ERROR_SUCCESS)
            return "value " + std::to_string(index) + " cannot be read: error " + std::to_string(result);
        last = name;
    }
    DWORD type = 0;
    if (!needsRoot)
        return "";
    if (RegQueryValueExA(key.get(), "QV_ROOT", nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS)
        return std::getenv("QV_ROOT") != nullptr ? "" : "the key has no value QV_ROOT";
    return type == REG_SZ || type == REG_EXPAND_SZ ? "" : "QV_ROOT is not a string";
}

// The checks of a key: its place; its place and settings; or its place and settings, which must include
// QV_ROOT.
enum class Use { Place, Settings, SettingsWithRoot };

// Writes the line of a key.  Returns ERROR_SUCCESS, or the error of the registry.  ifAbsent: the fault to
// report if the key does not exist; empty if the key may be absent.
static LONG checkKey(const char *key, SetUpLines &lines, Use use = Use::Place, const char *ifAbsent = "") {
    char place[kPlaceSize];
    const LONG found = OS_PlaceOfKey(key, place, sizeof place);
    std::string fault;
    if (found == ERROR_SUCCESS && use != Use::Place)
        fault = faultOfSettings(key, use == Use::SettingsWithRoot);
    else if (found == ERROR_FILE_NOT_FOUND)
        fault = ifAbsent;
    else if (found != ERROR_SUCCESS)
        fault = place;
    const bool hasPlace = found == ERROR_SUCCESS || (found == ERROR_FILE_NOT_FOUND && *ifAbsent != '\0');
    lines.part(kRegistryKey, key, hasPlace ? place : "", fault);
    return found;
}

// Writes the lines of the keys that are read for a server.  False if the registry cannot be read, or has no
// key with settings for the server.
static bool checkRegistry(const Options &options) {
    const LentRights rights(true);
    SetUpLines lines(true);
    const bool needsRoot = options.acctPath2 == nullptr || options.oidPath == nullptr;
    const Use settings = needsRoot ? Use::SettingsWithRoot : Use::Settings;
    const std::string own = std::string(kServicesKey) + kSpoolerPrefix + options.serverName + kEnvironmentKey;
    const LONG ofOwn = checkKey(own.c_str(), lines, settings);
    if (ofOwn != ERROR_SUCCESS && ofOwn != ERROR_FILE_NOT_FOUND)
        return false;
    const LONG ofCommon = ofOwn == ERROR_SUCCESS
                              ? checkKey(kCommonEnvironmentKey, lines)
                              : checkKey(kCommonEnvironmentKey, lines, settings,
                                         "the key does not exist, and the server has no key of its own");
    checkKey(kLogonDeviceKey, lines);
    checkKey(OS_WORKSTATION_KEY, lines);
    return ofOwn == ERROR_SUCCESS || ofCommon == ERROR_SUCCESS;
}

// ---- Paths ----

static bool checkLogDirectory(const std::string &path, bool isTheSystems) {
    const LentRights rights(isTheSystems);
    SYSU_dir *directory = SYSU_Opendir(path.c_str());
    const std::string fault = directory == nullptr ? std::strerror(errno) : "";
    if (directory != nullptr)
        SYSU_Closedir(directory);
    SetUpLines(isTheSystems).part("log directory", path, path, fault);
    return fault.empty();
}

static bool checkOidTable(const std::string &folder, bool isTheSystems) {
    const LentRights rights(isTheSystems);
    const std::string path = folder + "/oids";
    OidTable table;
    const OidTable::State state = table.load(path.c_str(), OidTable::Kind::Identifiers);
    const std::string fault = state == OidTable::State::Absent ? path + ": no such file" : table.whyBad();
    SetUpLines(isTheSystems).part("OID table", folder, path, state != OidTable::State::Loaded ? fault : "");
    return state == OidTable::State::Loaded;
}

// Writes the lines of QV_ROOT, the log directory and the OID table.  Returns 0 and sets logPath to the log
// directory, or returns the exit status.
static int checkPaths(const Options &options, std::string &logPath) {
    const bool logsAreTheSystems = options.acctPath2 == nullptr;
    const bool oidsAreTheSystems = options.oidPath == nullptr;
    const char *root = std::getenv("QV_ROOT");
    const bool lacksRoot = root == nullptr && (logsAreTheSystems || oidsAreTheSystems);
    SetUpLines(true).part("QV_ROOT", root != nullptr ? root : "", "", lacksRoot ? "is not set" : "");
    if (lacksRoot)
        return kStatusNoRoot;
    Malloced<char> madePath;
    const char *foundPath = findLogPath(options, madePath);
    if (foundPath == nullptr)
        return reportNoLogPath();
    logPath = foundPath;
    const bool found = checkLogDirectory(logPath, logsAreTheSystems);
    const bool readable = checkOidTable(
        oidsAreTheSystems ? std::string(root) + "/share/oid" : options.oidPath, oidsAreTheSystems);
    if (!found)
        return ALA_A_INVALID_LOG_PATH_NAME;
    return readable ? 0 : ALA_A_OID_ERROR;
}

int qvledger::checkSetUp(const Options &options, std::string &logPath) {
    writeFields({"set-up", "value", "place", "fault"});
    if (!checkRegistry(options) || !loadServiceEnvironment(options.serverName)) {
        DisplayMsg(kMsgEnvironment);
        return kStatusBadStart;
    }
    writeFields({"message catalogue", hasCatalogue() ? "found" : "none: the program's own texts", "", ""});
    return checkPaths(options, logPath);
}
