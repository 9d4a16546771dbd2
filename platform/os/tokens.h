// The access token of the calling process, and the groups in the token.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

enum TOKEN_INFORMATION_CLASS : std::int32_t { TokenGroups = 2 };
constexpr DWORD TOKEN_QUERY = 8;
constexpr DWORD SE_GROUP_USE_FOR_DENY_ONLY = 0x10; // an attribute; groups on Linux never have it

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1]; // GroupCount elements; the SIDs follow in the same buffer
};

extern "C" {

HANDLE GetCurrentProcess();
BOOL OpenProcessToken(HANDLE in_process, DWORD in_access, HANDLE *outp_token);

// Writes a TOKEN_GROUPS with the groups of the calling user, each once; other classes are not supported.
// Returns non-zero on success, otherwise 0.  Error 122, with the needed size, if the groups do not fit.
BOOL GetTokenInformation(HANDLE in_token, TOKEN_INFORMATION_CLASS in_class, void *outp_info, DWORD in_length,
                         DWORD *outp_needed);

// Closes a token or a process.  Returns non-zero on success; 0, with error 6, for any other handle.
BOOL CloseHandle(HANDLE handle);

} // extern "C"

#endif
