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

// Is the report the state file or its lock?
bool StateFile::isReport(const char *report) const {
    OS_fileIdentity output = {};
    if ((report != nullptr ? OS_IdentifyTarget(report, &output)
                           : OS_IdentifyDescriptor(_fileno(stdout), &output)) != 0)
        return false;
    for (const char *name : {name_, lockName_.c_str()}) {
        OS_fileIdentity own = {};
        if (OS_IdentifyTarget(name, &own) == 0 && OS_IsSameFile(own, output))
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
    NewFile file(name_);
    const std::string text = WrittenLogs().text();
    if (!file.isOpen() || !file.write(text.data(), text.size()) || !file.nameNew())
        return refuse(name_, std::strerror(errno));
    return true;
}

bool StateFile::open(const char *report) {
    std::error_code error;
    lockName_ = std::filesystem::weakly_canonical(name_, error).string() + ".lock"; // follows symbolic links
    if (error)
        return refuse(name_, error.message().c_str());
    OS_fileIdentity identity = {};
    if (OS_IdentifyTarget(lockName_.c_str(), &identity) == 0 && !identity.regular)
        return refuse(lockName_.c_str(), "it is not a regular file");
    switch (lock_.open(lockName_.c_str())) {
    case ReportFile::Opened::GivenUp:
        return false;
    case ReportFile::Opened::No:
        return refuse(lockName_.c_str(), std::strerror(errno));
    case ReportFile::Opened::Yes:
        break;
    }
    if (!create())
        return false;
    return isReport(report) ? refuse(name_, "the report would be written to it") : read();
}

bool StateFile::save() const {
    std::error_code error;
    const std::string path = std::filesystem::canonical(name_, error).string(); // keeps a symbolic link
    if (error)
        return refuse(name_, error.message().c_str());
    Descriptor old(OS_OpenToRead(path.c_str()));
    NewFile file(path);
    const std::string text = logs_.text();
    if (!old.isOpen() || !file.isOpen())
        return refuse(name_, std::strerror(errno));
    OS_GiveAttributes(old.get(), file.descriptor());
    old.reset(-1); // Windows cannot replace an open file
    if (!file.write(text.data(), text.size()) || !file.nameOver() || OS_SyncFolderOf(file.descriptor()) != 0)
        return refuse(name_, std::strerror(errno));
    return true;
}
