// Identity and state of the file that a descriptor or a name refers to.
#pragma once

#include "platform/os/types.h"

// Times are nanoseconds since 1970.  They overflow for years outside 1678 to 2261, but still show every
// change.
struct OS_fileIdentity {
    std::uint64_t device;
    std::uint64_t number;
    std::int64_t size;            // bytes
    std::int64_t modified;        // last change of the contents
    std::int64_t changed;         // last change of the contents, attributes or names
    std::int64_t modifiedSeconds; // `modified` in seconds since 1970; does not overflow
    std::uint64_t names;          // number of hard links; 0 after the last one was removed
    bool regular;                 // a regular file
};

// Do both identities belong to one file?  On Windows, also true for any two devices or pipes.
inline bool OS_IsSameFile(const OS_fileIdentity &one, const OS_fileIdentity &two) {
    return one.device == two.device && one.number == two.number;
}

extern "C" {

// Set the identity and return 0; return -1, with errno, if the file does not exist or cannot be examined.
// For a symbolic link, OS_IdentifyName examines the link and OS_IdentifyTarget the file that the link refers
// to.
int OS_IdentifyDescriptor(int fd, OS_fileIdentity *identity);
int OS_IdentifyName(const char *path, OS_fileIdentity *identity);
int OS_IdentifyTarget(const char *path, OS_fileIdentity *identity);

// Like OS_IdentifyDescriptor, for identities that are compared to detect later changes.  File times advance
// in steps, so another change within the same step would not be detected.  After a very recent change the
// call therefore sleeps until the step is over and examines the file again.  It gives up after at most 12
// seconds if the file keeps changing, and returns the last identity.
int OS_IdentifySettled(int fd, OS_fileIdentity *identity);

} // extern "C"
