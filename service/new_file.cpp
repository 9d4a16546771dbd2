#include "service/new_file.h"

#include <cerrno>
#include <utility>

#include "platform/os.h"

using namespace qvledger;

constexpr int kMostLeft = 1000; // files that killed processes with the same number may have left

NewFile::NewFile(std::string path) : path_(std::move(path)) {
    // Do not use the file's name, which may already have the maximum length.
    const std::string folder = path_.substr(0, path_.find_last_of(OS_SEPARATORS) + 1); // npos + 1 is 0
    const std::string firstPath = folder + ".being-saved." + std::to_string(_getpid());
    partPath_ = firstPath;
    file_.reset(OS_MakeFile(partPath_.c_str()));
    for (int left = 1; left <= kMostLeft && !file_.isOpen() && errno == EEXIST; ++left) {
        partPath_ = firstPath + "." + std::to_string(left);
        file_.reset(OS_MakeFile(partPath_.c_str()));
    }
}

NewFile::~NewFile() {
    const int error = errno;
    if (file_.isOpen() && !isNamed_)
        static_cast<void>(_unlink(partPath_.c_str()));
    errno = error;
}

bool NewFile::write(const void *bytes, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
        const int put =
            _write(file_.get(), static_cast<const char *>(bytes) + done, static_cast<unsigned>(size - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += static_cast<std::size_t>(put);
    }
    return true;
}

bool NewFile::sync() {
    int synced = 0;
    do
        synced = _commit(file_.get());
    while (synced != 0 && errno == EINTR);
    return synced == 0;
}

bool NewFile::nameNew() {
    if (!sync())
        return false;
    const int moved = OS_NameNewFile(partPath_.c_str(), path_.c_str());
    if (moved == OS_TAKEN)
        errno = EEXIST;
    isNamed_ = moved == OS_DONE;
    return isNamed_;
}

bool NewFile::nameOver() {
    isNamed_ = sync() && OS_ReplaceName(partPath_.c_str(), path_.c_str()) == 0;
    return isNamed_;
}
