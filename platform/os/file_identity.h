// Which file it is that a descriptor or a name leads to, and in which state.
#pragma once

#include "platform/os/types.h"

// The file as it stood when it was looked at.  Times are nanoseconds since 1970.
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
inline bool OS_IsSameFile(const OS_fileIdentity &one, const OS_fileIdentity &two) {
    return one.device == two.device && one.number == two.number;
}

extern "C" {

// 0, or -1 when there is no such file.  OS_IdentifyName looks at a symbolic link itself, OS_IdentifyTarget
// behind it.
int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity);
int OS_IdentifyName(const char *path, OS_fileIdentity *identity);
int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity);

// OS_IdentifyDescriptor for a file whose later changes shall all show.  File times advance in steps, so a
// file that was changed just now is looked at again when the step is over.
int OS_IdentifySettled(int fd, OS_fileIdentity *identity);

} // extern "C"
