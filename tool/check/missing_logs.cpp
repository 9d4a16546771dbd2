#include "tool/check/missing_logs.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "ala/driver/session.h"
#include "tool/check/log_table.h"
#include "tool/missing.h"

using namespace qvledger;

static const char *tailOf(const char *name, const char *server) {
    return name + std::strlen(server) + 1;
}

static void writeNotALog(const char *server, const char *name, const char *effect) {
    const std::string reason =
        "the name is not " + std::string(server) + ".YYYYMMDD or " + server + ".current: " + effect;
    writeUnreadLogLine(server, name, LogState::NotALog, reason.c_str());
}

bool qvledger::isLogsName(const char *server, const char *name) {
    if (isLogTail(tailOf(name, server)))
        return true;
    writeNotALog(server, name, "a report cannot open it");
    return false;
}

// The date in a name such as "alpha.20261103.gz"; 0: none.
static std::int32_t dateIn(const std::string &name, const char *server) {
    const std::string date = std::string(tailOf(name.c_str(), server)).substr(0, std::strlen("YYYYMMDD"));
    return isLogTail(date) ? std::atoi(date.c_str()) : 0;
}

std::size_t qvledger::writeNamesLikeLogs(const Options &options, const std::string &logPath, int &error) {
    std::vector<std::string> names;
    error = findNamesLikeLogs(options.serverName, logPath.c_str(), names);
    std::erase_if(names, [&](const std::string &name) {
        const std::int32_t date = dateIn(name, options.serverName);
        return date != 0 && !dateRange(options).contains(date);
    });
    for (const std::string &name : names)
        writeNotALog(options.serverName, name.c_str(), "reports ignore it");
    return names.size();
}

std::size_t qvledger::writeMissingDays(const char *server, const ServerSession &session,
                                       const DateRange &range) {
    DayGaps gaps(range);
    std::vector<Missing> missing;
    const ALA_name *name = session.nameList;
    for (const dateNode *node = session.dateList; node != nullptr; node = node->next, name = name->next) {
        const std::int32_t date = ALA__NumFromDate(&node->date);
        if (isLogTail(tailOf(name->logName, server)))
            gaps.date(server, date, missing);
    }
    for (const Missing &days : missing) {
        const std::string last = days.last == days.first ? "" : " to " + dateText(days.last);
        writeUnreadLogLine(server, "", LogState::Missing,
                           (days.reason + ": " + dateText(days.first) + last).c_str());
    }
    return missing.size();
}
