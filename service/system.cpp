#include "service/system.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <getopt.h>

#include "platform/os.h"
#include "service/calendar.h"

using namespace qvledger;

constexpr std::size_t kOptionsSize = 512; // bytes; enough for every letter with two colons

std::int32_t SYSU_Getopt(std::int32_t in_argc, char *const *inp_argv, const char *inp_options) {
    // With the plus sign, getopt stops at the first operand; without it, getopt would also parse options
    // after operands.  The buffer is local, because this function cannot report that memory ran out.
    char options[kOptionsSize];
    std::snprintf(options, sizeof options, "+%s", inp_options);
    opterr = 0;
    return ::getopt(in_argc, inp_argv, options);
}

std::int32_t SYSU_Open(const char *inp_path, std::int32_t) {
    return OS_OpenToRead(inp_path);
}

std::tm *SYSU_Localtime_r(const std::int64_t *inp_time, std::tm *outp_local) {
    const std::time_t time = *inp_time;
    std::tm local{};
    if (!OS_HasZoneRules(time))
        local = calendarOf(time - _timezone);
    else if (localtime_s(&local, &time) != 0)
        return nullptr;
    *outp_local = local;
    return outp_local;
}

// ---- Directories ----

// A SYSU_dir is the C library's DIR.
static DIR *streamOf(SYSU_dir *dir) {
    return reinterpret_cast<DIR *>(dir);
}

SYSU_dir *SYSU_Opendir(const char *inp_path) {
    return reinterpret_cast<SYSU_dir *>(::opendir(inp_path));
}

std::int32_t SYSU_Readdir_r(SYSU_dir *inp_dir, SYSU_dirent *outp_entry, SYSU_dirent **outpp_result) {
    *outpp_result = nullptr;
    errno = 0; // distinguishes a failure from the end
    const dirent *entry = ::readdir(streamOf(inp_dir));
    if (entry == nullptr)
        return errno;
    const std::size_t size = std::strlen(entry->d_name) + 1;
    if (size > sizeof outp_entry->d_name)
        return ENAMETOOLONG;
    std::memcpy(outp_entry->d_name, entry->d_name, size);
    *outpp_result = outp_entry;
    return 0;
}

void SYSU_Closedir(SYSU_dir *inp_dir) {
    if (inp_dir != nullptr)
        ::closedir(streamOf(inp_dir));
}

// ---- Paths ----

// The calls above accept paths with "/", so the conversion is a copy.
std::int32_t FA_ConvertFilePath(const char *inp_path, std::uint32_t in_length, char **outpp_path,
                                std::uint32_t *outp_length) {
    *outpp_path = nullptr;
    *outp_length = 0;
    const std::size_t length = strnlen(inp_path, in_length);
    auto *path = static_cast<char *>(std::malloc(length + 1));
    if (path == nullptr)
        return ENOMEM;
    std::copy_n(inp_path, length, path);
    path[length] = '\0';
    *outpp_path = path;
    *outp_length = static_cast<std::uint32_t>(length + 1);
    return 0;
}
