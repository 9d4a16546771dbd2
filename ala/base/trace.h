// Makes the facility's log entries: failures and expected results at level 5, details at level 6, traces at
// level 7.
#pragma once

#include "ala/ala.h"
#include "platform/os.h"
#include "service/log/log.h"

// Logs a failure and returns its code, as in: return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "...");
#define ALA_FAIL(code, ...) (LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, __VA_ARGS__), (code))

// Logs an expected result, such as the end of a log, and returns its code.
#define ALA_EXPECTED(code, ...) (LOG_CondMessage(LOG_EXPECTED, __FILE__, __LINE__, __VA_ARGS__), (code))

#define ALA_DETAIL(...) LOG_CondMessage(LOG_DETAIL, __FILE__, __LINE__, __VA_ARGS__)

namespace qvledger {

// The name of a code.  Empty if the code has no name; "unknown" for an unknown code.
const char *codeName(ALA_retCode_t code);

// If this thread's last opening of a key failed because of a fault in the registry file, logs the fault.
inline void logRegistryTrouble(const char *file = __builtin_FILE(), std::int32_t line = __builtin_LINE()) {
    if (const char *trouble = OS_RegistryTrouble(); *trouble != '\0')
        LOG_CondMessage(LOG_ERROR, file, line, "%s", trouble);
}

// Logs that an operation begins and, on every path, that it ends.  Logs neither if traces are off at the
// beginning.
class FuncTrace {
public:
    explicit FuncTrace(const char *function, const char *file = __builtin_FILE(),
                       std::int32_t line = __builtin_LINE()) {
        if (LOG_Wants(LOG_TRACE)) [[unlikely]]
            enter(function, file, line);
    }
    ~FuncTrace() {
        if (function_ != nullptr) [[unlikely]]
            LOG_CondFuncTrace(function_, file_, line_, 0, 0);
    }
    FuncTrace(const FuncTrace &) = delete;
    FuncTrace &operator=(const FuncTrace &) = delete;

private:
    void enter(const char *function, const char *file, std::int32_t line) {
        function_ = function;
        file_ = file;
        line_ = line;
        LOG_CondFuncTrace(function_, file_, line_, 1, 0);
    }

    const char *function_ = nullptr; // null: traces are off
    const char *file_ = nullptr;     // source file of the operation
    std::int32_t line_ = 0;
};

} // namespace qvledger
