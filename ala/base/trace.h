// The facility's log entries: a level 5 line per failure, details at level 6, traces at level 7.
#pragma once

#include "ala/ala.h"
#include "platform/os.h"
#include "service/log/log.h"

// Logs a failure and evaluates to its code: return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "...").
#define ALA_FAIL(code, ...) (LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, __VA_ARGS__), (code))

#define ALA_DETAIL(...) LOG_CondMessage(LOG_DETAIL, __FILE__, __LINE__, __VA_ARGS__)

namespace qvledger {

// The name of a code, empty if it has none; "unknown" for an unknown code.
const char *codeName(ALA_retCode_t code);

// Logs the fault of the registry file, if it made this thread's last opening of a key fail.
inline void logRegistryTrouble(const char *file = __builtin_FILE(), std::int32_t line = __builtin_LINE()) {
    if (const char *trouble = OS_RegistryTrouble(); *trouble != '\0')
        LOG_CondMessage(LOG_ERROR, file, line, "%s", trouble);
}

// Traces an operation's entry and, on every path, its exit, if traces are on at entry.
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

    const char *function_ = nullptr; // null: not traced
    const char *file_ = nullptr;     // source file of the operation
    std::int32_t line_ = 0;
};

} // namespace qvledger
