#include "tool/check/set_up_table.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ala/driver.h"
#include "tool/check/fields.h"
#include "tool/exit_status.h"
#include "tool/facility.h"
#include "tool/messages.h"
#include "tool/rights.h"

using namespace qvledger;

namespace {

// Puts the parts of the set-up into their table, and tells the user of faults.
class SetUpLines final : public ALA__setUpWatch {
public:
    // What is looked at with lent rights the caller may not be able to see: where it stands is not told.
    explicit SetUpLines(bool partIsTheSystems) : hides(partIsTheSystems && OS_HasLentRights() != 0) {}

    void part(const char *what, const char *value, const char *place, const char *fault) override {
        const bool isPath = std::strcmp(what, "registry key") != 0; // whose names are no secret
        const bool namesPath = isPath && fault != nullptr && std::strchr(fault, '/') != nullptr;
        const char *shownValue = hides && isPath ? "" : value;
        const char *shownPlace = hides ? "" : place;
        const char *shownFault = hides && namesPath ? "cannot be used" : fault;
        writeFields({what, shownValue, shownPlace, fault != nullptr ? shownFault : ""});
        if (fault != nullptr)
            tellOf(what, shownValue, shownPlace, shownFault);
    }

private:
    static void tellOf(std::string what, const std::string &value, const std::string &place,
                       const std::string &fault) {
        if (!value.empty() && !place.starts_with(value))
            what += " " + value;
        if (!place.empty() && !fault.starts_with(place))
            what += ": " + place;
        std::fflush(stdout);
        DisplayMsg(kMsgCheckSetUp, (what + ": " + fault).c_str());
    }

    bool hides;
};

} // namespace

// What lies below QV_ROOT, or where the options say.
static int checkPaths(const Options &options, std::string &logPath) {
    const bool logsAreTheSystems = options.acctPath2 == nullptr;
    const bool oidsAreTheSystems = options.oidPath == nullptr;
    SetUpLines ofLogs(logsAreTheSystems);
    SetUpLines ofOids(oidsAreTheSystems);
    const char *root = std::getenv("QV_ROOT");
    const bool lacksRoot = root == nullptr && (logsAreTheSystems || oidsAreTheSystems);
    SetUpLines(true).part("QV_ROOT", root != nullptr ? root : "", "", lacksRoot ? "is not set" : nullptr);
    if (lacksRoot)
        return kStatusNoRoot;
    Malloced<char> madePath;
    const char *foundPath = findLogPath(options, madePath);
    if (foundPath == nullptr)
        return tellNoLogPath();
    logPath = foundPath;
    const std::string oidPath = oidsAreTheSystems ? std::string(root) + "/share/oid" : options.oidPath;
    bool found = false;
    {
        const LentRights rights(logsAreTheSystems);
        found = ALA__CheckLogDirectory(logPath.c_str(), ofLogs);
    }
    const LentRights rights(oidsAreTheSystems);
    const bool readable = ALA__CheckOidTable(oidPath.c_str(), ofOids);
    if (!found)
        return ALA_A_INVALID_LOG_PATH_NAME;
    return readable ? 0 : ALA_A_OID_ERROR;
}

int qvledger::checkSetUp(const Options &options, std::string &logPath) {
    writeFields({"set-up", "value", "place", "fault"});
    bool registryIsSound = false;
    {
        const LentRights rights(true);
        SetUpLines ofRegistry(true);
        registryIsSound = ALA__CheckRegistry(
            options.serverName, options.acctPath2 == nullptr || options.oidPath == nullptr, ofRegistry);
    }
    if (!registryIsSound || !loadServiceEnvironment(options.serverName)) {
        DisplayMsg(kMsgEnvironment);
        return kStatusBadStart;
    }
    writeFields({"message catalogue", hasCatalogue() ? "found" : "none: the program's own texts", "", ""});
    return checkPaths(options, logPath);
}
