#include "tool/json/state_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "service/new_file.h"
#include "tool/messages.h"

using namespace qvledger;

static bool refuse(const char *name, const char *why) {
    DisplayMsg(kMsgStateFile, name, why);
    return false;
}

// The absolute path of a file that may not exist, without symbolic links.  Converts the name from char8_t,
// because for char the C++ library of Windows assumes the characters of the C locale instead of UTF-8.
static std::string pathOf(const char *name, std::error_code &error) try {
    const std::filesystem::path path =
        std::filesystem::absolute(reinterpret_cast<const char8_t *>(name), error);
    return error ? "" : std::filesystem::weakly_canonical(path, error).string();
} catch (const std::filesystem::filesystem_error &failure) { // on Windows, for a name that is not UTF-8
    error = failure.code();
    return "";
}

// Is the report the state file or its lock, or would it be?
bool StateFile::isReport(const char *report) const {
    std::error_code error;
    if (report != nullptr)
        if (const std::string path = pathOf(report, error); path == path_ || path == lockPath_)
            return true;
    OS_fileIdentity output = {};
    if ((report != nullptr ? OS_IdentifyTarget(report, &output)
                           : OS_IdentifyDescriptor(_fileno(stdout), &output)) != 0)
        return false;
    for (const std::string &path : {path_, lockPath_}) {
        OS_fileIdentity own = {};
        if (OS_IdentifyTarget(path.c_str(), &own) == 0 && OS_IsSameFile(own, output))
            return true;
    }
    return false;
}

bool StateFile::read() {
    const Descriptor file(OS_OpenToRead(name_));
    if (!file.isOpen())
        return refuse(name_, std::strerror(errno));
    std::string text;
    std::array<char, 64 * 1024> piece;
    int got = 0;
    while ((got = OS_ReadAt(file.get(), static_cast<std::int64_t>(text.size()), piece.data(),
                            static_cast<unsigned>(piece.size()))) > 0)
        text.append(piece.data(), static_cast<std::size_t>(got));
    if (got < 0)
        return refuse(name_, std::strerror(errno));
    if (const std::size_t line = logs_.read(text); line != 0)
        return refuse(name_, ("line " + std::to_string(line) + " is not from qvledger-json -c").c_str());
    return true;
}

// Creates a file that says that nothing is written, unless the file exists.
bool StateFile::create() const {
    OS_fileIdentity identity = {};
    if (OS_IdentifyTarget(name_, &identity) == 0)
        return identity.regular || refuse(name_, "it is not a regular file");
    NewFile file(path_);
    const std::string text = WrittenLogs().text();
    if (!file.isOpen() || !file.write(text.data(), text.size()) || !file.nameNew())
        return refuse(name_, std::strerror(errno));
    return true;
}

bool StateFile::open(const char *report) {
    std::error_code error;
    path_ = pathOf(name_, error);
    lockPath_ = path_ + ".lock";
    if (error)
        return refuse(name_, error.message().c_str());
    if (isReport(report))
        return refuse(name_, "the report would be written to it");
    OS_fileIdentity identity = {};
    if (OS_IdentifyTarget(lockPath_.c_str(), &identity) == 0 && !identity.regular)
        return refuse(lockPath_.c_str(), "it is not a regular file");
    switch (lock_.open(lockPath_.c_str())) {
    case ReportFile::Opened::GivenUp:
        return false;
    case ReportFile::Opened::No:
        return refuse(lockPath_.c_str(), std::strerror(errno));
    case ReportFile::Opened::Yes:
        break;
    }
    return create() && read();
}

bool StateFile::save() const {
    Descriptor old(OS_OpenToRead(path_.c_str()));
    NewFile file(path_);
    const std::string text = logs_.text();
    if (!old.isOpen() || !file.isOpen())
        return refuse(name_, std::strerror(errno));
    OS_GiveAttributes(old.get(), file.descriptor());
    old.reset(-1); // Windows cannot replace an open file
    if (!file.write(text.data(), text.size()) || !file.nameOver() || OS_SyncFolderOf(file.descriptor()) != 0)
        return refuse(name_, std::strerror(errno));
    return true;
}
