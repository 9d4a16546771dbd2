// How the facility writes its log: one level 5 line a failure, details at level 6, entry and exit traced.
#pragma once

#include "service/log.h"

// Logs the failure and gives the code: return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "...").
#define ALA_FAIL(code, ...) (LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, __VA_ARGS__), (code))

#define ALA_DETAIL(...) LOG_CondMessage(LOG_DETAIL, __FILE__, __LINE__, __VA_ARGS__)

// Traces an operation's entry, and its exit on whichever road it is left.
class FuncTrace {
public:
    explicit FuncTrace(const char *in_function) : function(in_function) {
        LOG_CondFuncTrace(function, __FILE__, __LINE__, 1, 0);
    }
    ~FuncTrace() { LOG_CondFuncTrace(function, __FILE__, __LINE__, 0, 0); }
    FuncTrace(const FuncTrace &) = delete;
    FuncTrace &operator=(const FuncTrace &) = delete;

private:
    const char *function;
};
