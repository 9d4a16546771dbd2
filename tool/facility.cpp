#include "tool/facility.h"

#include <cstdlib>

#include "ala/driver.h"
#include "service/log.h"
#include "tool/exit_status.h"
#include "tool/messages.h"
#include "tool/rights.h"

using namespace qvledger;

Facility::~Facility() {
    ALA_FreeDateList(&dateList);
    ALA_FreeNameList(&nameList);
    if (mainh != nullptr)
        ALA_Unregister(&mainh); // too late for its result to matter
}

bool qvledger::loadServiceEnvironment(const char *serverName) {
    const LentRights rights(true);
    char *serviceName = nullptr;
    const bool named = ALA__GetServiceName(serverName, kServerTypeSpooler, &serviceName) == 0;
    const Malloced<char> owner(serviceName);
    return named && ALA__SetEnvironmentVariables(serviceName) == 0;
}

const char *qvledger::findLogPath(const Options &options, Malloced<char> &made) {
    if (options.acctPath2 != nullptr)
        return options.acctPath2;
    const char *root = std::getenv("QV_ROOT");
    made.reset(root != nullptr ? _ALA_AddChar(root, "/var/acct") : nullptr);
    return made.get();
}

int qvledger::tellNoLogPath() {
    if (std::getenv("QV_ROOT") != nullptr) {
        DisplayMsg(kMsgNoMemory);
        return kStatusNoMemory;
    }
    if (LOG_StartMessage(LOG_ERROR, __FILE__, __LINE__, 0) != 0) {
        LOG_CondAdd("QV_ROOT environment variable not set\n");
        LOG_EndMessage();
    }
    DisplayMsg(kMsgEnvironment);
    return kStatusNoRoot;
}

ALA_retCode_t qvledger::registerServer(const Options &options, const char *logPath, Facility &facility) {
    findDomainWithLentRights();
    ALA_retCode_t result = ALA_N_NORMAL;
    {
        const LentRights rights(options.oidPath == nullptr);
        result = ALA_Register(options.serverName, logPath, options.oidPath, &facility.mainh);
    }
    if (result != ALA_N_NORMAL)
        tellFailure(result, nullptr);
    return result;
}

ALA_retCode_t qvledger::listLogs(const Options &options, Facility &facility) {
    const LentRights rights(options.acctPath2 == nullptr);
    const ALA_retCode_t result =
        ALA_ListExistingLogsByDate(facility.mainh, &facility.dateList, &facility.nameList);
    if (result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), options.serverName);
        logFailure(nullptr, result);
        static_cast<void>(ALA_Unregister(&facility.mainh)); // the run has failed anyway
    }
    return result;
}

std::int32_t qvledger::countLogs(const Facility &facility, const DateRange &range) {
    std::int32_t count = 0;
    for (const dateNode *node = facility.dateList; node != nullptr; node = node->next)
        count += range.contains(ALA__NumFromDate(&node->date)) ? 1 : 0;
    return count;
}

ALA_retCode_t qvledger::releaseFacility(Facility &facility) {
    ALA_retCode_t result = ALA_FreeDateList(&facility.dateList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeDateList error: ", result);
        return result;
    }
    result = ALA_FreeNameList(&facility.nameList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeNameList error: ", result);
        return result;
    }
    result = ALA_Unregister(&facility.mainh);
    if (result != ALA_N_NORMAL)
        logFailure("ALA_Unregister error: ", result);
    return result;
}
