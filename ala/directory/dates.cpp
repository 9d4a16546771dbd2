#include "ala/directory/dates.h"

#include <cstdlib>
#include <cstring>

#include "platform/os.h"
#include "service/clock.h"
#include "service/system.h"

using namespace qvledger;

// The years that a date number can express.
constexpr std::int32_t kFirstYear = 1;
constexpr std::int32_t kLastYear = 9999;

ALA_retCode_t qvledger::dateOfLog(const char *tail, const char *path, std::int32_t *date) {
    if (std::strcmp(tail, kCurrentTail) == 0)
        return ALA__GetDateFromStat(path, date);
    *date = static_cast<std::int32_t>(std::atol(tail));
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__IsTodaysDate(const ALA_time *inp_date, std::int32_t *outp_result) {
    *outp_result = 0;
    const StatusList status;
    GEN_generalizedTime *now = nullptr;
    if (GENU_GetCurrentTime(status, &now, 0) != 0)
        return ALA_A_FAIL_TO_GET_TIME;
    if (inp_date->year == now->year && inp_date->month == now->month && inp_date->day == now->day)
        *outp_result = 1;
    GEN_DeleteGeneralizedTime(status, now, nullptr);
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__GetDateFromStat(const char *inp_fileName, std::int32_t *outp_dateInNum) {
    OS_fileIdentity file = {};
    if (OS_IdentifyTarget(inp_fileName, &file) != 0)
        return ALA_A_FAIL_TO_GET_TIME;
    std::tm local = {};
    if (SYSU_Localtime_r(&file.modifiedSeconds, &local) == nullptr || local.tm_year < kFirstYear - 1900 ||
        local.tm_year > kLastYear - 1900) {
        *outp_dateInNum = kOffTheCalendar;
        return ALA_A_FAIL_TO_GET_TIME;
    }
    *outp_dateInNum = (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
    return ALA_N_NORMAL;
}
