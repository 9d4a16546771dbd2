#include "tool/options.h"

#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <set>
#include <string_view>

#include "service/system.h"
#include "tool/messages.h"

using namespace qvledger;

void qvledger::replaceLongOptions(int argc, char **argv) {
    static char help[] = "-h";
    static char version[] = "-V";
    for (int i = 1; i < argc && argv[i][0] == '-'; ++i) {
        const std::string_view option = argv[i];
        if (option == "--")
            return;
        if (option == "--help")
            argv[i] = help;
        else if (option == "--version")
            argv[i] = version;
    }
}

Options qvledger::readOptions(int argc, char *const *argv, const char *letters) {
    Options options;
    for (;;) {
        switch (SYSU_Getopt(argc, argv, letters)) {
        case 'd':
            ++options.dflg;
            break;
        case 'o':
            options.ofile = optarg;
            break;
        case 's':
            options.startDate = optarg;
            break;
        case 'e':
            options.endDate = optarg;
            break;
        case 'p':
            options.acctPath2 = optarg;
            break;
        case 'O':
            options.oidPath = optarg;
            break;
        case 'S':
            options.saveFolder = optarg;
            break;
        case 'b':
            options.groupBy = optarg;
            break;
        case 'k':
            options.sortBy = optarg;
            break;
        case 'n':
            options.top = optarg;
            break;
        case 'f':
            options.form = optarg;
            break;
        case 'c':
            options.stateFile = optarg;
            break;
        case 'h':
            ++options.helpflg;
            break;
        case 'V':
            ++options.verflg;
            break;
        case 'a':
            options.docflg = 1;
            break;
        case 'g':
            options.suppressHeadflg = 1;
            break;
        case 't':
            options.typeflg = 1;
            break;
        case 'q':
            options.quietflg = 1;
            break;
        case -1:
            if (optind >= argc)
                return options;
            options.serverName = argv[optind];
            options.moreServers = argv + optind + 1;
            options.numMoreServers = argc - optind - 1;
            return options;
        default:
            ++options.errflg;
        }
    }
}

std::vector<const char *> qvledger::serversOf(const Options &options) {
    std::vector<const char *> servers(options.moreServers, options.moreServers + options.numMoreServers);
    if (options.serverName != nullptr)
        servers.insert(servers.begin(), options.serverName);
    return servers;
}

bool qvledger::areDistinctNames(const std::vector<const char *> &servers) {
    const std::set<std::string_view> names(servers.begin(), servers.end());
    return !names.empty() && names.size() == servers.size() && !names.contains("");
}

static std::int32_t lastDayOf(std::int32_t year, std::int32_t month) {
    for (const std::int32_t shorter : {4, 6, 9, 11})
        if (month == shorter)
            return 30;
    if (month != 2)
        return 31;
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year / 100 % 4 == 0);
    return leap ? 29 : 28;
}

std::int32_t qvledger::ValidDate(const char *dateStr, std::int32_t dateTypeStr) {
    constexpr std::int32_t kDigits = 8;
    std::int32_t digits = 0;
    while (digits <= kDigits && std::isdigit(static_cast<unsigned char>(dateStr[digits])) != 0)
        ++digits;
    if (digits != kDigits) {
        DisplayMsg(dateTypeStr == kStartDate ? kMsgBadStartDate : kMsgBadEndDate, dateStr);
        return 0;
    }
    const std::int32_t number = std::atoi(dateStr);
    const std::int32_t year = number / 10000;
    const std::int32_t month = number % 10000 / 100;
    const std::int32_t day = number % 100;
    if (month > 12 || month < 1) {
        DisplayMsg(kMsgBadMonth, month, dateStr);
        return 0;
    }
    if (day > lastDayOf(year, month) || day < 1) {
        DisplayMsg(kMsgBadDay, day, dateStr);
        return 0;
    }
    return 1;
}

bool qvledger::datesAreValid(const Options &options) {
    return (options.startDate == nullptr || ValidDate(options.startDate, kStartDate) == 1) &&
           (options.endDate == nullptr || ValidDate(options.endDate, kEndDate) == 1);
}

DateRange qvledger::dateRange(const Options &options) {
    constexpr std::int32_t kNoUpperBound = 99999999;
    return {options.startDate != nullptr ? std::atoi(options.startDate) : 0,
            options.endDate != nullptr ? std::atoi(options.endDate) : kNoUpperBound};
}
