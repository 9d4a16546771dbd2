// The basic types of the calls.  On Windows, includes the system's headers instead.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define NOGDI        // macros of the graphics interface would replace our names
#include <windows.h> // first, because the headers below need its types

#include <fcntl.h>
#include <io.h>
#include <lm.h>
#include <mbstring.h>
#include <process.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#else

using BOOL = int;
using BYTE = std::uint8_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using DWORD = std::uint32_t;
using HANDLE = void *;
using HMODULE = void *;
using PSID = void *;
using FARPROC = void (*)();

#endif
