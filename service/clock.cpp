#include "service/clock.h"

#include <chrono>
#include <ctime>

#include "platform/os.h"
#include "service/packed/value_memory.h"

using namespace qvledger;

static std::int16_t narrow(long number) {
    return static_cast<std::int16_t>(number);
}

std::int32_t GENU_GetCurrentTime(STF_l__hdr *, GEN_generalizedTime **outpp_time, std::int32_t) {
    *outpp_time = nullptr;
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    if (localtime_s(&local, &seconds) != 0)
        return 1;
    ValueMemory block;
    auto *time = static_cast<GEN_generalizedTime *>(block.allocate(sizeof(GEN_generalizedTime)));
    if (time == nullptr)
        return 1;
    block.handOver();
    *time = {};
    time->year = narrow(local.tm_year + 1900L);
    time->month = narrow(local.tm_mon + 1L);
    time->day = narrow(local.tm_mday);
    time->hour = narrow(local.tm_hour);
    time->minute = narrow(local.tm_min);
    time->second = narrow(local.tm_sec);
    time->millisec = narrow(static_cast<long>(now.time_since_epoch().count() % 1000));
    time->mindiff = narrow(_timezone / 60);
    *outpp_time = time;
    return 0;
}

void GEN_DeleteGeneralizedTime(STF_l__hdr *, GEN_generalizedTime *inp_time, void *) {
    ValueMemory::release(inp_time);
}

void GENU_TimeZoneInit() {
    _tzset();
}
