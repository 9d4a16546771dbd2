// The token of the calling process, and the groups in it.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

enum TOKEN_INFORMATION_CLASS : std::int32_t { TokenGroups = 2 };
constexpr DWORD TOKEN_QUERY = 8;

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1]; // GroupCount entries; their SIDs follow in the same buffer
};

extern "C" {

HANDLE GetCurrentProcess();
BOOL OpenProcessToken(HANDLE in_process, DWORD in_access, HANDLE *outp_token);

// Only class 2: a TOKEN_GROUPS with the real caller's groups, each once.  Non-zero is success.  Fails with
// 122, and the size needed, when they do not fit.
BOOL GetTokenInformation(HANDLE in_token, TOKEN_INFORMATION_CLASS in_class, void *outp_info, DWORD in_length,
                         DWORD *outp_needed);

// The handle is a token or a process; no other handles are ever open.
BOOL CloseHandle(HANDLE handle);

} // extern "C"

#endif
