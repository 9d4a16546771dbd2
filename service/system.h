// SYSU_ and FA_: options, files, directories and paths of the system the program runs on.
#pragma once

#include <cstdint>
#include <ctime>

struct SYSU_dir; // an open directory

// The entry that SYSU_Readdir_r fills; 520 bytes, as all callers hold it.
struct SYSU_dirent {
    char d_name[520];
};

extern "C" {

// getopt: the next option letter, -1 at the first operand or the end, '?' for an unknown option or a missing
// argument, without printing anything.  Sets optarg, the option's argument, and optind, the place of the next
// one to look at.
extern char *optarg;
extern int optind;
std::int32_t SYSU_Getopt(std::int32_t in_argc, char *const *inp_argv, const char *inp_options);

// A descriptor for reading a file, good for _read, _lseeki64 and _close; -1 on failure, and for a device,
// pipe or socket.  It is not inherited by other programs.
std::int32_t SYSU_Open(const char *inp_path, std::int32_t in_flags);

// Local time; null on failure, with the output untouched.
std::tm *SYSU_Localtime_r(const std::int64_t *inp_time, std::tm *outp_local);

// Directories.  Opendir gives null on failure; Readdir_r gives 0 and a non-null result per entry, non-zero or
// a null result at the end.
SYSU_dir *SYSU_Opendir(const char *inp_path);
std::int32_t SYSU_Readdir_r(SYSU_dir *inp_dir, SYSU_dirent *outp_entry, SYSU_dirent **outpp_result);
void SYSU_Closedir(SYSU_dir *inp_dir);

// Turns a path with "/" into one that the calls above take, released with free.  Lengths count the NUL.
// 0, or non-zero when memory runs out.
std::int32_t FA_ConvertFilePath(const char *inp_path, std::uint32_t in_length, char **outpp_path,
                                std::uint32_t *outp_length);

} // extern "C"
