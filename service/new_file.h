// A file that gets its name only when its contents are complete and on the disk.
#pragma once

#include <cstddef>
#include <string>

#include "platform/descriptor.h"

namespace qvledger {

// Until it is named, the file is ".being-saved." followed by the process number, in the folder of its later
// name.  The destructor removes a file that was not named.
class NewFile {
public:
    // Creates the file, which only its owner can access.  On failure isOpen() is false, with errno.
    explicit NewFile(std::string path);
    ~NewFile();
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    bool isOpen() const { return file_.isOpen(); }
    int descriptor() const { return file_.get(); }

    // Writes all bytes.  False on failure, with errno.
    bool write(const void *bytes, std::size_t size);

    // Each syncs the file and gives it its name, but does not sync the folder.  nameNew() fails with EEXIST
    // if the name is taken; nameOver() replaces a file with that name.  False on failure, with
    // errno.
    bool nameNew();
    bool nameOver();

private:
    bool sync();

    std::string path_, partPath_;
    Descriptor file_;
    bool isNamed_ = false;
};

} // namespace qvledger
