// Loading of run-time libraries.  The only one is the network library, which reports the workstation's group.
#pragma once

#include "platform/os/types.h"

// The registry key whose value LanGroup is the machine's group.
constexpr char OS_WORKSTATION_KEY[] = "SYSTEM\\CurrentControlSet\\Services\\LanmanWorkstation\\Parameters";

#ifndef _WIN32

struct WKSTA_INFO_101 {
    DWORD wki101_platform_id;
    wchar_t *wki101_computername;
    wchar_t *wki101_langroup;
    DWORD wki101_ver_major;
    DWORD wki101_ver_minor;
    wchar_t *wki101_lanroot;
};

extern "C" {

// Loads "netapi32.dll", which has NetWkstaGetInfo and NetApiBufferFree; null for any other name.
HMODULE LoadLibraryA(const char *inp_name);
FARPROC GetProcAddress(HMODULE in_library, const char *inp_name);
BOOL FreeLibrary(HMODULE in_library);
DWORD NetWkstaGetInfo(wchar_t *in_server, DWORD in_level, BYTE **outp_buffer);
DWORD NetApiBufferFree(void *in_buffer);

} // extern "C"

#endif
