#include "tests/support/facility.h"

#include <utility>

#include "service/log/log.h"
#include "service/log/log_internal.h"
#include "tests/support/run_tool.h"

NextDay::NextDay()
    : Scripted(script::GENU_GetCurrentTime,
               [](STF_l__hdr *status, GEN_generalizedTime **time, auto reserved) {
                   const std::int32_t result = __real_GENU_GetCurrentTime(status, time, reserved);
                   (*time)->year = 2001;
                   (*time)->month = 2;
                   (*time)->day = 4;
                   return result;
               }) {}

void Facility::layCurrentLog() const {
    samples::Log().save(path("current"));
    setChanged(path("current"), 981'243'000);
}

void Facility::setTimeZone(const char *zone) {
    setenv("TZ", zone, 1);
    tzset();
}

Facility::Facility() {
    const auto take = [](void *context, std::int32_t level, const char *, std::int32_t, const char *text) {
        static_cast<Facility *>(context)->entries_.emplace_back(level, text);
    };
    LOG_SetFunction(take, this);
    setenv("QV_REGISTRY", root.registry().c_str(), 1);
    unsetenv("QV_ROOT");
    setLogLevel("5");
    setTimeZone("UTC0");
    registerAgain();
}

void Facility::registerAgain() {
    if (handle != nullptr) {
        EXPECT_EQ(ALA_Unregister(&handle), ALA_N_NORMAL);
    }
    EXPECT_EQ(ALA_Register("alpha", root.logs().c_str(), root.oids().c_str(), &handle), ALA_N_NORMAL);
}

Facility::~Facility() {
    close();
    if (handle != nullptr) {
        EXPECT_EQ(ALA_Unregister(&handle), ALA_N_NORMAL);
    }
    LOG_SetFunction(nullptr, nullptr);
    for (const char *name : {"QV_LOG_LEVEL", "QV_REGISTRY", "QV_ROOT", "TZ"})
        unsetenv(name);
    tzset();
    LOG__Reset();
}

void Facility::setLogLevel(const char *level) {
    setenv("QV_LOG_LEVEL", level, 1);
    LOG__Reset();
}

std::vector<std::string> Facility::takeLog(char logLevel) {
    std::vector<std::string> texts;
    for (auto &[level, text] : std::exchange(entries_, {}))
        if (level == logLevel - '0')
            texts.push_back(std::move(text));
    return texts;
}

ALA_retCode_t Facility::open(const samples::Log &logName) {
    close();
    logName.save(path());
    return ALA_Open(handle, &kDay, &log);
}

void Facility::close() {
    if (log != nullptr) {
        EXPECT_EQ(ALA_Close(handle, &log), ALA_N_NORMAL);
    }
}
