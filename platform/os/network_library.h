// Loads the network library at run time.  The library reports the workstation's group.
#pragma once

#include "platform/os/types.h"

// The registry key with the value LanGroup, which is the name of the machine's group.
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

// LoadLibraryA loads only "netapi32.dll", and GetProcAddress finds only its NetWkstaGetInfo and
// NetApiBufferFree; both return null for any other name.  NetWkstaGetInfo supports only level 101, and only a
// null server, which means this machine.  It returns a Win32 error code; on 0 the buffer is a WKSTA_INFO_101
// that NetApiBufferFree releases.
HMODULE LoadLibraryA(const char *inp_name);
FARPROC GetProcAddress(HMODULE in_library, const char *inp_name);
BOOL FreeLibrary(HMODULE in_library);
DWORD NetWkstaGetInfo(wchar_t *in_server, DWORD in_level, BYTE **outp_buffer);
DWORD NetApiBufferFree(void *in_buffer);

} // extern "C"

#endif
