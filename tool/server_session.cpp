#include "tool/server_session.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "ala/driver/session.h"
#include "service/log/log.h"
#include "tool/exit_status.h"
#include "tool/messages.h"
#include "tool/program.h"
#include "tool/rights.h"

using namespace qvledger;

ServerSession::~ServerSession() {
    ALA_FreeDateList(&dateList);
    ALA_FreeNameList(&nameList);
    if (mainh != nullptr)
        ALA_Unregister(&mainh); // the result no longer matters
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

int qvledger::reportNoLogPath() {
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

ALA_retCode_t qvledger::registerServer(const Options &options, const char *logPath, ServerSession &session) {
    checkZone(); // the server's settings may contain a zone
    findDomainWithLentRights();
    ALA_retCode_t result = ALA_N_NORMAL;
    {
        const LentRights rights(options.oidPath == nullptr);
        result = ALA_Register(options.serverName, logPath, options.oidPath, &session.mainh);
    }
    if (result != ALA_N_NORMAL)
        reportFailure(result, nullptr);
    return result;
}

namespace {

class ListingMessages final : public ListingWatch {
public:
    ListingMessages(const Options &options, ServerSession &session) : options_(options), session_(session) {}

    void aside(const char *name) override { DisplayMsg(kMsgBeingDeleted, name); }
    void cut(int error) override {
        session_.isListCut = true;
        DisplayMsg(kMsgListCut, options_.serverName, std::strerror(error));
    }

private:
    const Options &options_;
    ServerSession &session_;
};

} // namespace

void qvledger::reportEqualDates(const ServerSession &session, const DateRange &range) {
    const ALA_name *name = session.nameList;
    for (const dateNode *node = session.dateList; node->next != nullptr;
         node = node->next, name = name->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        const auto isCurrent = [](const ALA_name *log) {
            return std::string_view(log->logName).ends_with(".current");
        };
        if (!range.contains(date) || date != ALA__NumFromDate(&node->next->date) ||
            !(isCurrent(name) || isCurrent(name->next)))
            continue;
        DisplayMsg(kMsgEqualDates, name->logName, name->next->logName);
    }
}

ALA_retCode_t qvledger::listLogs(const Options &options, ServerSession &session) {
    const LentRights rights(options.acctPath2 == nullptr);
    ListingMessages messages(options, session);
    const ALA_retCode_t result =
        listLogsByDate(session.mainh, messages, &session.dateList, &session.nameList);
    if (result != ALA_N_NORMAL) {
        DisplayMsgFromErr(static_cast<std::uint32_t>(result), options.serverName);
        logFailure(nullptr, result);
        static_cast<void>(ALA_Unregister(&session.mainh)); // a further failure does not matter
    }
    return result;
}

std::int32_t qvledger::countLogs(const ServerSession &session, const DateRange &range) {
    std::int32_t count = 0;
    for (const dateNode *node = session.dateList; node != nullptr; node = node->next)
        count += range.contains(ALA__NumFromDate(&node->date)) ? 1 : 0;
    return count;
}

ALA_retCode_t qvledger::endSession(ServerSession &session) {
    ALA_retCode_t result = ALA_FreeDateList(&session.dateList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeDateList error: ", result);
        return result;
    }
    result = ALA_FreeNameList(&session.nameList);
    if (result != ALA_N_NORMAL) {
        logFailure("ALA_FreeNameList error: ", result);
        return result;
    }
    result = ALA_Unregister(&session.mainh);
    if (result != ALA_N_NORMAL)
        logFailure("ALA_Unregister error: ", result);
    return result;
}
