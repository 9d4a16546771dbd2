// Files: by descriptor, and by name.
#pragma once

#include "platform/os/types.h"

// The results of what can meet another program.
constexpr int OS_DONE = 0;
constexpr int OS_TAKEN = 1;    // another one has the file, or the name
constexpr int OS_REFUSED = -1; // by the system; errno tells why

#ifndef _WIN32

// glibc makes st_mtime a macro, which would rename the field of struct _stat below.
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
#pragma GCC diagnostic ignored "-Wshadow" // record and call share their name, as stat's do
int _stat(const char *inp_path, struct _stat *outp_stat);
#pragma GCC diagnostic pop
int _unlink(const char *inp_path);

// Gives the bytes read, 0 at the end of the file, -1 on failure.
int _read(int in_fd, void *outp_buffer, unsigned in_size);
// The new position, or -1.
std::int64_t _lseeki64(int fd, std::int64_t offset, int origin);
int _close(int in_fd);
// Gives the bytes written, fewer than asked for where no more fit; -1 on failure.
int _write(int fd, const void *bytes, unsigned size);
// A second descriptor of the same open file, position and locks included; -1 on failure.
int _dup(int fd);
int _isatty(int fd);
int _fileno(std::FILE *stream);
// 0 once everything written is on the disk, -1 where it cannot be.
int _commit(int fd);

} // extern "C"

#endif

extern "C" {

// Opens a file or folder to read; -1 on failure.  A device, pipe or socket is not opened, with errno ENOTSUP.
int OS_OpenToRead(const char *path);

// Opens a file to append to, and makes it if there is none; a symbolic link is followed, also one that leads
// nowhere yet.  -1 on failure.  *made is the path at which a file was made, to be released with free,
// or null.
int OS_OpenToAppend(const char *path, char **made);

// Opens an open file once more, with a position and a lock of its own: to read, else to append.  -1 when that
// is refused.
int OS_OpenAgain(int fd);

// The last byte of a file that is open to be read; -1 when it is empty or not to be read.
int OS_LastByte(int fd);

// Cuts an open file to a size and, where it is not appended to, moves its position there.  0, or -1.
int OS_CutFile(int fd, std::int64_t size);

// Gives a file another name in its folder without replacing what may have that name: OS_TAKEN then, and
// OS_REFUSED on any other failure, with errno EBUSY where another program has the file open and will not have
// it moved.
int OS_MoveName(const char *from, const char *to);

// The same for a file that was just made and that nobody else knows.  Where the system cannot give a name
// that way, the file has both names for a moment.
int OS_NameNewFile(const char *from, const char *to);

// Puts the name of an open file on the disk.  0, or -1.
int OS_SyncFolderOf(int fd);

} // extern "C"
