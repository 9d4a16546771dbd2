// The registry: keys and their values.
//
// Zero is success; key is HKEY_LOCAL_MACHINE or a key that was opened.  A missing key gives 2, a registry
// file that is malformed or cannot be read 1015; OS_RegistryTrouble tells why.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

struct OS_registryKey; // an open key; stands behind HKEY
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

// The value at an index.  Sizes: bytes of the buffer in; out, the name's length without its NUL and the
// data's with it.  259 behind the last value, 234 when name or data does not fit.
LONG RegEnumValueA(HKEY in_key, DWORD in_index, char *outp_name, DWORD *inoutp_nameSize, DWORD *in_reserved,
                   DWORD *outp_type, BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegQueryValueExA(HKEY in_key, const char *inp_name, DWORD *in_reserved, DWORD *outp_type,
                      BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegCloseKey(HKEY in_key);

} // extern "C"

#endif

extern "C" {

// What is wrong with the registry file, if this thread's last opening of a key gave 1015 for it, or the last
// look for its place met it: the file, the line if it has one, and the reason.  Else an empty text.  It stays
// until the thread opens a key again.
const char *OS_RegistryTrouble();

// The file that the registry is read from, whether it is there or not.
const char *OS_RegistryPath();

// Where a key below HKEY_LOCAL_MACHINE stands, "file:line"; only the file with error 2, if it is not there;
// an empty text with any other error, which OS_RegistryTrouble explains unless memory ran out.
LONG OS_PlaceOfKey(const char *path, char *text, std::size_t size);

} // extern "C"
