// SYSU_ and FA_: command-line options, files, local time, directories and paths.
#pragma once

#include <cstdint>
#include <ctime>

struct SYSU_dir; // an open directory

// The directory entry that SYSU_Readdir_r fills.  A name that does not fit is a failure.
struct SYSU_dirent {
    char d_name[520];
};

extern "C" {

// Parses the next command-line option.  Returns its letter; -1 at the first operand or the end; '?' for an
// unknown option or a missing argument.  Prints nothing.  Sets optarg to the option's argument, and optind to
// the index of the next argument to parse.
extern char *optarg;
extern int optind;
std::int32_t SYSU_Getopt(std::int32_t in_argc, char *const *inp_argv, const char *inp_options);

// Opens a file for _read, _lseeki64 and _close.  Returns the descriptor, or -1 with errno.  Linux refuses a
// device, pipe or socket.  Child programs do not inherit the descriptor.
std::int32_t SYSU_Open(const char *inp_path, std::int32_t in_flags);

// Converts seconds since 1970 to local time; null on failure, with the output unchanged.
std::tm *SYSU_Localtime_r(const std::int64_t *inp_time, std::tm *outp_local);

// Directories.  Opendir returns null on failure.  Readdir_r returns 0 with a non-null result for each entry,
// 0 with a null result at the end, and non-zero with a null result on failure.  Closedir accepts null.
SYSU_dir *SYSU_Opendir(const char *inp_path);
std::int32_t SYSU_Readdir_r(SYSU_dir *inp_dir, SYSU_dirent *outp_entry, SYSU_dirent **outpp_result);
void SYSU_Closedir(SYSU_dir *inp_dir);

// Converts a path with "/" to a new path that the calls above accept; release it with free().  Lengths
// count the NUL.  Returns 0; non-zero, with the outputs null and 0, when memory runs out.
std::int32_t FA_ConvertFilePath(const char *inp_path, std::uint32_t in_length, char **outpp_path,
                                std::uint32_t *outp_length);

} // extern "C"
