// The registry: keys and their values.
//
// The calls return a Win32 error code: 0 on success, 2 for a missing key or value.  On Linux, 1015 means that
// the registry file is malformed or cannot be read; OS_RegistryTrouble returns the reason.  RegOpenKeyExA
// opens a key below HKEY_LOCAL_MACHINE; the other calls need an opened key.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

struct OS_registryKey; // an open key
using HKEY = OS_registryKey *;
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<std::uintptr_t>(0x80000002U)))
constexpr DWORD KEY_QUERY_VALUE = 1;
constexpr DWORD KEY_READ = 0x20019;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_MULTI_SZ = 7;

extern "C" {

LONG RegOpenKeyExA(HKEY in_key, const char *inp_path, DWORD in_options, DWORD in_access, HKEY *outp_key);

// Gets the value at an index.  Sizes: on input, bytes of the buffers; on output, the name's length without
// its NUL, and the data's size, which counts a text's NUL if the text has one.  Returns 259 after the last
// value, and 234 if the name or the data does not fit.
LONG RegEnumValueA(HKEY in_key, DWORD in_index, char *outp_name, DWORD *inoutp_nameSize, DWORD *in_reserved,
                   DWORD *outp_type, BYTE *outp_data, DWORD *inoutp_dataSize);
// Gets the value with a name; type and data may be null.  Returns 234, with the needed size, if the data does
// not fit.
LONG RegQueryValueExA(HKEY in_key, const char *inp_name, DWORD *in_reserved, DWORD *outp_type,
                      BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegCloseKey(HKEY in_key);

} // extern "C"

#endif

extern "C" {

// The reason why this thread's last RegOpenKeyExA or OS_PlaceOfKey returned 1015: the file, the line if
// known, and the fault.  Empty if that call did not return 1015, and always on Windows.  Valid until the
// thread calls RegOpenKeyExA or OS_PlaceOfKey again.
const char *OS_RegistryTrouble();

// The path of the registry file, which may not exist; on Windows "HKEY_LOCAL_MACHINE".
const char *OS_RegistryPath();

// Writes the place of a key below HKEY_LOCAL_MACHINE, truncated to size bytes, and returns a Win32 error
// code.  On 0 the place is "file:line", with line 0 if only keys below the key occur; on Windows it is the
// key's full path.  On 2 (no such key) it is OS_RegistryPath().  On any other code it is the reason of
// the failure.
LONG OS_PlaceOfKey(const char *path, char *text, std::size_t size);

} // extern "C"
