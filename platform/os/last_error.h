// The error code of this thread's last failure.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

constexpr LONG ERROR_SUCCESS = 0;
constexpr LONG ERROR_FILE_NOT_FOUND = 2;
constexpr LONG ERROR_ACCESS_DENIED = 5;
constexpr LONG ERROR_INVALID_HANDLE = 6;
constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr LONG ERROR_INVALID_PARAMETER = 87;
constexpr LONG ERROR_BUFFER_OVERFLOW = 111;
constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
constexpr LONG ERROR_MORE_DATA = 234;
constexpr LONG ERROR_NO_MORE_ITEMS = 259;
constexpr LONG ERROR_REGISTRY_CORRUPT = 1015;
constexpr LONG ERROR_NONE_MAPPED = 1332;

extern "C" {

DWORD GetLastError();
void SetLastError(DWORD error);

} // extern "C"

#endif
