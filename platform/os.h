// The operating-system calls that the system is written against, under the names of their real ones.
//
// On Windows the real headers are included here and nothing else is needed.  Everywhere else this header
// declares exactly the subset in use, with the same names, argument orders, result rules and record layouts;
// platform/posix/ implements it.  docs/architecture.md tells what stands behind each call on Linux.
//
// All operations have C linkage, so that a test can put a scripted one in the place of a single call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <fcntl.h>
#include <io.h>
#include <lm.h>
#include <mbstring.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <windows.h>
#else

// glibc makes st_mtime a macro, which would rename the field of struct _stat below.
#include <sys/stat.h>
#undef st_mtime

using BOOL = int;
using BYTE = std::uint8_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using DWORD = std::uint32_t;
using HANDLE = void *;
using HMODULE = void *;
using PSID = void *;
using FARPROC = void (*)();

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

// ---- Version of the system ----

constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;
constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize; // 148, set by the caller
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};
static_assert(sizeof(OSVERSIONINFOA) == 148);

// ---- Security and identity ----

enum SID_NAME_USE : std::int32_t {
    SidTypeUser = 1,
    SidTypeGroup = 2,
    SidTypeAlias = 4,
    SidTypeWellKnownGroup = 5
};
enum TOKEN_INFORMATION_CLASS : std::int32_t { TokenGroups = 2 };
constexpr DWORD TOKEN_QUERY = 8;

struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1]; // GroupCount of them; the SIDs lie behind, in the same buffer
};

// ---- Registry ----

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

// ---- Network library ----

struct WKSTA_INFO_101 {
    DWORD wki101_platform_id;
    wchar_t *wki101_computername;
    wchar_t *wki101_langroup;
    DWORD wki101_ver_major;
    DWORD wki101_ver_minor;
    wchar_t *wki101_lanroot;
};

constexpr UINT CP_OEMCP = 1;

// ---- Files ----

struct _stat {
    std::uint64_t st_dev;
    std::uint64_t st_ino;
    std::int64_t st_size;
    std::int64_t st_mtime;
};

extern "C" {

// Fills the record; dwOSVersionInfoSize must be 148.  Non-zero is success.  Linux answers as platform 2.
BOOL GetVersionExA(OSVERSIONINFOA *inoutp_version);

// The reason of the last failure on this thread.
DWORD GetLastError();
void SetLastError(DWORD in_error);

// The calling user's account name, from the real user id; of "DOMAIN\user" or "user@domain" only the user.
// inoutp_size: bytes of the buffer in, bytes of the name with its NUL out.  Non-zero is success.
BOOL GetUserNameA(char *outp_name, DWORD *inoutp_size);

// SID, domain and kind of an account.  Fails with 122 and both sizes as needed (the domain's with its NUL)
// when a buffer is too small, with 1332 for a name that no account has.  On success the domain's size is
// that of the text without its NUL.
BOOL LookupAccountNameA(const char *in_system, const char *inp_name, PSID outp_sid, DWORD *inoutp_sidSize,
                        char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

// Name, domain and kind of the account of a SID; sizes and failures as above.
BOOL LookupAccountSidA(const char *in_system, PSID inp_sid, char *outp_name, DWORD *inoutp_nameSize,
                       char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

HANDLE GetCurrentProcess();
BOOL OpenProcessToken(HANDLE in_process, DWORD in_access, HANDLE *outp_token);

// Class 2 alone: a TOKEN_GROUPS with the groups of the real caller, each once.  Fails with 122, and the
// size needed, when they do not fit.
BOOL GetTokenInformation(HANDLE in_token, TOKEN_INFORMATION_CLASS in_class, void *outp_info, DWORD in_length,
                         DWORD *outp_needed);
BOOL CloseHandle(HANDLE in_handle);

// The computer's name: the host name up to its first dot, at most 15 characters.  inoutp_size: bytes of the
// buffer in, characters without the NUL out.  Non-zero is success.
BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size);

HANDLE GetProcessHeap();
void *HeapAlloc(HANDLE in_heap, DWORD in_flags, std::size_t in_size);
void *HeapReAlloc(HANDLE in_heap, DWORD in_flags, void *in_block, std::size_t in_size);
BOOL HeapFree(HANDLE in_heap, DWORD in_flags, void *in_block);

// Registry.  Zero is success.  in_key is HKEY_LOCAL_MACHINE.  A missing key gives 2, a registry file that is
// malformed or cannot be read 1015, after its file and line went to the reporter (OS_SetReporter).
LONG RegOpenKeyExA(HKEY in_key, const char *inp_path, DWORD in_options, DWORD in_access, HKEY *outp_key);

// The value at an index.  Sizes: bytes of the buffer in; out, the name's length without its NUL and the
// data's with it.  259 behind the last value, 234 when name or data does not fit.
LONG RegEnumValueA(HKEY in_key, DWORD in_index, char *outp_name, DWORD *inoutp_nameSize, DWORD *in_reserved,
                   DWORD *outp_type, BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegQueryValueExA(HKEY in_key, const char *inp_name, DWORD *in_reserved, DWORD *outp_type,
                      BYTE *outp_data, DWORD *inoutp_dataSize);
LONG RegCloseKey(HKEY in_key);

// Run-time libraries: "netapi32.dll" with NetWkstaGetInfo and NetApiBufferFree; null for any other.
HMODULE LoadLibraryA(const char *inp_name);
FARPROC GetProcAddress(HMODULE in_library, const char *inp_name);
BOOL FreeLibrary(HMODULE in_library);
DWORD NetWkstaGetInfo(wchar_t *in_server, DWORD in_level, BYTE **outp_buffer);
DWORD NetApiBufferFree(void *in_buffer);

// Wide text to UTF-8.  A size of 0 asks for the bytes needed.  in_wideLength -1: up to and with the NUL.
int WideCharToMultiByte(UINT in_codePage, DWORD in_flags, const wchar_t *inp_wide, int in_wideLength,
                        char *outp_text, int in_size, const char *in_default, BOOL *outp_usedDefault);

// Files.  _read gives the bytes read, 0 at the end of the file, -1 on failure; it reads ahead in large blocks
// and gives fewer bytes than asked for only where the file ends.  _lseek drops what was read ahead, so that
// bytes appended or overwritten meanwhile are seen.
int _read(int in_fd, void *outp_buffer, unsigned in_size);
long _lseek(int in_fd, long in_offset, int in_origin);
int _close(int in_fd);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // record and call share their name, as stat's do
int _stat(const char *inp_path, struct _stat *outp_stat);
#pragma GCC diagnostic pop
int _unlink(const char *inp_path);

// Gives the bytes written, fewer than asked for where no more fit; -1 on failure.
int _write(int in_fd, const void *inp_bytes, unsigned in_size);
// A second descriptor of the same open file, position and locks included; -1 on failure.
int _dup(int in_fd);

// Descriptors of streams.  _commit gives 0 once everything written is on the disk, -1 where it cannot be.
int _fileno(std::FILE *inp_stream);
int _isatty(int in_fd);
int _commit(int in_fd);

// "name=value" into the process environment, which keeps a copy; an empty value removes the variable.  Other
// threads may read the environment meanwhile, but not change it by other means.
int _putenv(const char *inp_assignment);

char *_strdup(const char *inp_text);
int _stricmp(const char *inp_one, const char *inp_two);
int _memicmp(const void *inp_one, const void *inp_two, std::size_t in_length);

// Multibyte text is UTF-8 throughout the system; a byte that is none counts as a character of its own.
const unsigned char *_mbschr(const unsigned char *inp_text, unsigned in_character);
int _mbsicmp(const unsigned char *inp_one, const unsigned char *inp_two);

// Reads the process's time zone and sets _timezone, its standard time in seconds west of Greenwich.
void _tzset();
extern long _timezone;

} // extern "C"

#endif

// ---- Without a counterpart among the real calls ----

// The file behind a descriptor or a name, as it stood when it was looked at.  Times are nanoseconds since
// 1970.
struct OS_fileIdentity {
    std::uint64_t device;
    std::uint64_t number;
    std::int64_t size;     // bytes
    std::int64_t modified; // last change of the contents
    std::int64_t changed;  // the same, or of a name
    std::uint64_t names;   // that lead to it; 0 once it was removed
    bool regular;          // a file on a disk
};

// Two with the same device and number are one.
inline bool OS_IsSameFile(const OS_fileIdentity &in_one, const OS_fileIdentity &in_two) {
    return in_one.device == in_two.device && in_one.number == in_two.number;
}

// What _read has read ahead of a descriptor, from next up to end.  A caller may take bytes from its front by
// moving next, in place of a _read.
struct OS_readAhead {
    const unsigned char *next;
    const unsigned char *end;
};

// in_file, in_line: the place in the source.
using OS_reporter = void (*)(const char *in_file, std::int32_t in_line, const char *inp_text);

// Takes bytes of a stream: how many it took, 0 for a failure, with errno set.
using OS_writer = std::size_t (*)(void *inp_context, const char *inp_bytes, std::size_t in_size);

// The results of what can meet another program.
constexpr int OS_DONE = 0;
constexpr int OS_TAKEN = 1;    // another one has the file, or the name
constexpr int OS_REFUSED = -1; // by the system; errno tells why

extern "C" {

// 0, or -1 when there is no such file.  OS_IdentifyName looks at a symbolic link itself, OS_IdentifyTarget
// behind it.
int OS_IdentifyDescriptor(int in_fd, OS_fileIdentity *outp_identity);
int OS_IdentifyName(const char *inp_path, OS_fileIdentity *outp_identity);
int OS_IdentifyTarget(const char *inp_path, OS_fileIdentity *outp_identity);

// OS_IdentifyDescriptor for a file whose later changes shall all show.  File times advance in steps, so a
// file that was changed just now is looked at again when the step is over.
int OS_IdentifySettled(int in_fd, OS_fileIdentity *outp_identity);

// An exclusive advisory lock on an open file, which all its descriptors share and the last one to close ends.
// OS_DONE, OS_TAKEN or OS_REFUSED; never waits.
int OS_LockFile(int in_fd);
void OS_UnlockFile(int in_fd);

// Gives a file another name in its folder without replacing what may have that name: OS_TAKEN then, and
// OS_REFUSED on any other failure.
int OS_MoveName(const char *inp_from, const char *inp_to);

// Opens a file to append to, and makes it if there is none; a symbolic link is followed, also one that leads
// nowhere yet.  -1 on failure.  *outp_made is the path at which a file was made, to be released with free,
// or null.
int OS_OpenToAppend(const char *inp_path, char **outp_made);

// Opens an open file once more, with a position and a lock of its own: to read, else to append.  -1 when that
// is refused.
int OS_OpenAgain(int in_fd);

// The last byte of a file that is open to be read; -1 when it is empty or not to be read.
int OS_LastByte(int in_fd);

// 1 if the file is open under another descriptor, in this program or in another one; 0 if it is not, or the
// system does not tell.
int OS_IsOpenElsewhere(int in_fd);

// Cuts an open file to a size and, where it is not appended to, moves its position there.  0, or -1.
int OS_CutFile(int in_fd, std::int64_t in_size);

// A stream for writing whose bytes go to a function; null on failure.
std::FILE *OS_StreamTo(OS_writer in_writer, void *inp_context);

// Good until the descriptor is closed; null when there is none.
OS_readAhead *OS_ReadAheadOf(int in_fd);

// Puts the folder entry of a file that was just made on the disk.  0, or -1.
int OS_SyncFolderOf(const char *inp_path);

// Keeps other processes from opening the file for writing until the descriptor is closed.  0; 1 when one has
// it open for writing already; -1 where the system cannot tell.  Only the file's owner, or root, can be told.
int OS_HoldAgainstWriters(int in_fd);

// What a program of this system needs of its process, first of all: a failed write to a pipe without a reader
// or beyond the size that files may have is an error of that write, and the arrival of a writer whom a file
// is held against goes unnoticed, instead of being the program's end; and no file that it opens takes the
// place of a standard stream that came closed.
void OS_PrepareProcess();

// From now on the first signal that asks the program to end (interrupt, termination, hang-up) is noted, and a
// later one ends it; some ask twice at once.  A signal that the program was started to ignore stays ignored.
void OS_NoteEndSignals();
// The noted signal, or 0.
int OS_NotedSignal();
// Ends the program as the noted signal would have; without one it returns.
void OS_EndBySignal();
void OS_Sleep(int in_milliseconds);

// A variable of the environment that steers the program itself; null when it is not set, and when lent rights
// make the caller's environment one not to be trusted.
const char *OS_ProgramVariable(const char *inp_name);

// A set-group-id or set-user-id bit lends a program rights that its caller has not.  OS_HasLentRights gives
// non-zero then.  The other two choose with whose rights files are used from now on; a program without lent
// rights has only its caller's.  Both end the program when the system refuses, for it would go on with the
// wrong rights.
int OS_HasLentRights();
void OS_UseCallersRights();
void OS_UseLentRights();

// Where this layer tells of a malformed registry file, once until it changes; nowhere until it is set.
// service/ sets it.
void OS_SetReporter(OS_reporter in_reporter);

} // extern "C"
