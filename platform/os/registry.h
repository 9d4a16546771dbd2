// The registry: keys and their values.
//
// Zero is success.  A key is HKEY_LOCAL_MACHINE or was opened here.  A missing key or value gives 2; a
// registry file that is malformed or cannot be read gives 1015, and OS_RegistryTrouble has the reason.
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

// The value at an index.  Sizes: bytes of the buffer on input; on output, the name's length without its NUL
// and the data's size, a text's NUL included.  259 after the last value, 234 when name or data does not fit.
LONG RegEnumValueA(HKEY in_key, DWORD in_index, char *outp_name, DWORD *inoutp_nameSize, DWORD *in_reserved,
                   DWORD *outp_type, BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegQueryValueExA(HKEY in_key, const char *inp_name, DWORD *in_reserved, DWORD *outp_type,
                      BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegCloseKey(HKEY in_key);

} // extern "C"

#endif

extern "C" {

// The reason why this thread's last RegOpenKeyExA or OS_PlaceOfKey returned 1015: the file, the line if
// known, and the fault; else an empty text.  Valid until the thread's next call of either.
const char *OS_RegistryTrouble();

// The file that the registry is read from, whether it exists or not; on Windows "HKEY_LOCAL_MACHINE".
const char *OS_RegistryPath();

// Writes the place of a key below HKEY_LOCAL_MACHINE as "file:line", truncated to size bytes; on Windows its
// full path.  Error 2 (no such key) writes only the file.  Any other error writes an empty text;
// OS_RegistryTrouble has the reason unless memory ran out.
LONG OS_PlaceOfKey(const char *path, char *text, std::size_t size);

} // extern "C"
