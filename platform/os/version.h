// The version of the system.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;
constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize; // 148, set by the calling function
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};
static_assert(sizeof(OSVERSIONINFOA) == 148);

extern "C" {

// Fills the structure; dwOSVersionInfoSize must be 148.  Returns non-zero on success.  On Linux, the platform
// is 2.
BOOL GetVersionExA(OSVERSIONINFOA *inoutp_version);

} // extern "C"

#endif
