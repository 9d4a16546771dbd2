// Identity and state of the file that a descriptor or a name refers to.
#pragma once

#include "platform/os/types.h"

// Times are nanoseconds since 1970.
struct OS_fileIdentity {
    std::uint64_t device;
    std::uint64_t number;
    std::int64_t size;     // bytes
    std::int64_t modified; // last change of the contents
    std::int64_t changed;  // last change of the contents, attributes or names
    std::uint64_t names;   // number of hard links; 0 once the file was removed
    bool regular;          // a regular file
};

// Device and number identify a file.
inline bool OS_IsSameFile(const OS_fileIdentity &one, const OS_fileIdentity &two) {
    return one.device == two.device && one.number == two.number;
}

extern "C" {

// 0, or -1 with errno when the file does not exist or cannot be examined.  OS_IdentifyName does not follow a
// symbolic link, OS_IdentifyTarget does.
int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity);
int OS_IdentifyName(const char *path, OS_fileIdentity *identity);
int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity);

// OS_IdentifyDescriptor for a caller that compares identities to detect later changes.  File times advance in
// steps, so after a very recent change it sleeps until the step is over (seconds at most) and examines the
// file again.
int OS_IdentifySettled(int fd, OS_fileIdentity *identity);

} // extern "C"
