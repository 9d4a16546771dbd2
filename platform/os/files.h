// Files, by descriptor and by name.
#pragma once

#include "platform/os/types.h"

// Results of calls that another program can prevent.
constexpr int OS_DONE = 0;
constexpr int OS_TAKEN = 1;    // another program uses the file, or the name exists
constexpr int OS_REFUSED = -1; // by the system; errno has the reason

#ifndef _WIN32

// glibc defines st_mtime as a macro, which would rename the field of struct _stat below.
#include <sys/stat.h>
#undef st_mtime

struct _stat {
    std::uint64_t st_dev;
    std::uint64_t st_ino;
    std::int64_t st_size;
    std::int64_t st_mtime;
};

extern "C" {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // record and call have the same name, like stat
int _stat(const char *inp_path, struct _stat *outp_stat);
#pragma GCC diagnostic pop
int _unlink(const char *inp_path);

// Returns the bytes read, 0 at the end of the file, -1 on failure.
int _read(int in_fd, void *outp_buffer, unsigned in_size);
// Returns the new position, or -1.
std::int64_t _lseeki64(int fd, std::int64_t offset, int origin);
int _close(int in_fd);
// Returns the bytes written, fewer than asked for when no more fit; -1 on failure.
int _write(int fd, const void *bytes, unsigned size);
// A second descriptor of the open file, with the same position and locks; -1 on failure.
int _dup(int fd);
int _isatty(int fd);
int _fileno(std::FILE *stream);
// Flushes everything written to disk.  0, or -1.
int _commit(int fd);

} // extern "C"

#endif

extern "C" {

// Opens a file or folder for reading; -1 on failure.  Refuses a device, pipe or socket with errno ENOTSUP.
int OS_OpenToRead(const char *path);

// Opens a file for appending and creates it if it does not exist.  Follows symbolic links, also to a file
// that does not exist yet.  -1 on failure.  *made is the path of the file if it was created, released with
// free, else null.
int OS_OpenToAppend(const char *path, char **made);

// Opens an open file again, with its own position and locks: for reading, or for appending if it may not be
// read.  -1 on failure.
int OS_OpenAgain(int fd);

// The last byte of a file open for reading; -1 if the file is empty or cannot be read.
int OS_LastByte(int fd);

// Truncates an open file to a size in bytes and moves its position there.  0, or -1.
int OS_CutFile(int fd, std::int64_t size);

// Renames a file within its folder without replacing another one.  Returns OS_DONE; OS_TAKEN if the new name
// exists; else OS_REFUSED, with errno EBUSY if another program has the file open and does not allow renaming.
int OS_MoveName(const char *from, const char *to);

// OS_MoveName for a new file that no other program uses.  If the file system cannot rename without replacing,
// the file has both names for a moment.
int OS_NameNewFile(const char *from, const char *to);

// Flushes the name of an open file to disk.  0, or -1.
int OS_SyncFolderOf(int fd);

} // extern "C"
