// Files, by descriptor and by name.
#pragma once

#include "platform/os/types.h"

// Results of calls that can fail because of another program.
constexpr int OS_DONE = 0;
constexpr int OS_TAKEN = 1;    // the file is in use, or the name exists
constexpr int OS_REFUSED = -1; // any other failure

// The characters that can precede a file's name in a path.
#ifdef _WIN32
constexpr char OS_SEPARATORS[] = "\\/:";
#else
constexpr char OS_SEPARATORS[] = "/";

extern "C" {

int _unlink(const char *inp_path);

// Returns the number of bytes read; 0 at the end of the file; -1 on failure, with errno.
int _read(int in_fd, void *outp_buffer, unsigned in_size);
// Returns the new position, or -1 with errno.
std::int64_t _lseeki64(int fd, std::int64_t offset, int origin);
int _close(int in_fd);
// Returns the number of bytes written, which may be less than size; -1 on failure, with errno.
int _write(int fd, const void *bytes, unsigned size);
// Returns a copy of the descriptor, which shares its position and locks; -1 on failure, with errno.
int _dup(int fd);
int _isatty(int fd);
int _fileno(std::FILE *stream);
// Flushes everything that was written to the file to disk.  Returns 0, or -1 with errno.
int _commit(int fd);

} // extern "C"

#endif

extern "C" {

// Opens a file for reading.  Returns the descriptor, or -1 with errno.  Linux opens folders too, and refuses
// a device, pipe or socket with ENOTSUP.
int OS_OpenToRead(const char *path);

// Opens a file for appending and creates the file if it does not exist.  Follows symbolic links, even to a
// file that does not exist yet.  Returns the descriptor, or -1 with errno.  If this call created the file,
// *made is its path, which the calling function frees; otherwise *made is null.
int OS_OpenToAppend(const char *path, char **made);

// Opens the file of a descriptor a second time.  The new descriptor has its own position and locks.  It is
// open for reading, or for appending if the file cannot be opened for reading.  Returns the descriptor; -1 on
// failure.
int OS_OpenAgain(int fd);

// Returns the last byte of a file that is open for reading; -1 if the file is empty or cannot be read.  The
// descriptor's position may change.
int OS_LastByte(int fd);

// Truncates an open file to a size in bytes and moves the descriptor's position to the new end.  Returns 0,
// or -1 with errno.
int OS_CutFile(int fd, std::int64_t size);

// Renames a file within its folder, without replacing another file.  Returns OS_DONE; OS_TAKEN if the new
// name exists; otherwise OS_REFUSED, with errno.  Windows sets EBUSY if another program has the file open and
// does not allow renaming.
int OS_MoveName(const char *from, const char *to);

// Like OS_MoveName, for a new file that no other program uses.  If the file system cannot rename without
// replacing, the file has both names for a moment, or longer if the old name cannot be removed.
int OS_NameNewFile(const char *from, const char *to);

// Renames a file within its folder, and replaces a file that has the new name, on Linux atomically.  Returns
// 0, or -1 with errno.
int OS_ReplaceName(const char *from, const char *to);

// Flushes the name of an open file to disk.  Returns 0, or -1 with errno.  Does nothing on Windows and
// returns 0.
int OS_SyncFolderOf(int fd);

} // extern "C"
