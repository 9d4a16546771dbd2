#include "tests/fuzz/sandbox.h"

#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

// The next two functions replace the C library's look-ups, which read files several times for each log.  The
// logs in corpus/ admit the group that getgrgid_r() returns, so they open on any machine and for any user.
extern "C" int getpwuid_r(uid_t id, passwd *entry, char *, std::size_t, passwd **found) {
    static char name[] = "anna";
    *entry = {};
    entry->pw_name = name;
    entry->pw_uid = id;
    *found = entry;
    return 0;
}

extern "C" int getgrgid_r(gid_t id, group *entry, char *, std::size_t, group **found) {
    static char name[] = "auditors@HEADOFFICE";
    *entry = {};
    entry->gr_name = name;
    entry->gr_gid = id;
    *found = entry;
    return 0;
}

// Makes the folder in memory if possible: on a disk, syncing a saved log takes longer than all other work.
static std::filesystem::path makeFolder() {
    const std::filesystem::path memory = "/dev/shm";
    const bool isThere = std::filesystem::is_directory(memory);
    std::string name = (isThere ? memory : std::filesystem::temp_directory_path()) / "qvledger-fuzz-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    return name;
}

Sandbox::Sandbox() : folder_(makeFolder()), tree_(folder_) {
    setenv("QV_LOG", "none", 1);
    setenv("QV_REGISTRY", tree_.registry().c_str(), 1);
    setenv("TZ", "UTC", 1);
    tree_.writeRegistry("alpha");
}

Sandbox::~Sandbox() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

ALA_handle_t Sandbox::handle() const {
    static ALA_handle_t handle = nullptr;
    if (handle == nullptr &&
        ALA_Register("alpha", tree_.logs().c_str(), tree_.oids().c_str(), &handle) != ALA_N_NORMAL)
        throw std::runtime_error("no registration");
    return handle;
}

void Sandbox::write(const std::filesystem::path &file, std::span<const std::uint8_t> bytes) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool isWritten = fd >= 0 && ::write(fd, bytes.data(), bytes.size()) == std::ssize(bytes);
    if (close(fd) != 0 || !isWritten)
        throw std::runtime_error("cannot write " + file.string());
}
