// Distinguishes logs from other files by name: a report must not be written to a log, and a renamed log is in
// no report.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "ala/base/owners.h"
#include "ala/directory/dates.h"
#include "ala/directory/paths.h"
#include "ala/directory/scan.h"
#include "ala/driver/session.h"
#include "ala/log/header.h"
#include "service/system.h"

using namespace qvledger;

bool qvledger::isLogTail(std::string_view tail) {
    constexpr std::size_t kDigits = 8;
    const auto isDigit = [](unsigned char byte) { return std::isdigit(byte) != 0; };
    return tail == kCurrentTail || (tail.size() == kDigits && std::ranges::all_of(tail, isDigit));
}

// Does the name have the form of a log's name?  That is "NAME.current", or "NAME." and eight digits, or
// either of these with the suffix of a log that is being deleted.
static bool isNamedAsLog(std::string_view name) {
    if (name.ends_with(kAside))
        name.remove_suffix(kAside.size());
    const std::size_t dot = name.rfind('.');
    if (dot == 0 || dot == std::string_view::npos)
        return false;
    return isLogTail(name.substr(dot + 1));
}

// Does the file begin as a log?  Also true if the file cannot be opened.
static bool mayBeginAsLog(const char *path) {
    const Descriptor file(SYSU_Open(path, 0));
    return !file.isOpen() || beginsAsLog(file.get());
}

namespace {

class FileAmongLogs final : public EntryVisitor {
public:
    FileAmongLogs(std::string_view prefix, const OS_fileIdentity &file) : prefix_(prefix), file_(file) {}

    ALA_retCode_t visit(const FoundEntry &entry) override {
        const std::string_view name = entry.name;
        const bool isServers = name.starts_with(prefix_) && (name.size() - prefix_.size() <= kLongestTail ||
                                                             isAside(name.substr(prefix_.size())));
        if (isFound || (!isServers && !isNamedAsLog(name)))
            return ALA_N_NORMAL;
        const Malloced<char> path = pathInDirectory(entry.directory, entry.name);
        OS_fileIdentity log = {};
        isCut = isCut || path == nullptr;
        isFound = path != nullptr && OS_IdentifyTarget(path.get(), &log) == 0 && OS_IsSameFile(log, file_) &&
                  (isServers || mayBeginAsLog(path.get()));
        return ALA_N_NORMAL;
    }

    void cut(int) override { isCut = true; }

    bool isFound = false;
    bool isCut = false; // some of the directory's entries were not compared

private:
    const std::string_view prefix_;
    const OS_fileIdentity &file_;
};

} // namespace

bool qvledger::isLog(const char *serverName, const char *acctLogPath, const OS_fileIdentity &file,
                     std::int32_t fd) {
    const Malloced<char> prefix(_ALA_AddChar(serverName, "."));
    FileAmongLogs logs(prefix != nullptr ? prefix.get() : "", file);
    if (prefix != nullptr)
        visitDirectory(acctLogPath, "", logs);
    if (logs.isFound || (prefix != nullptr && !logs.isCut))
        return logs.isFound;
    return beginsAsLog(fd);
}

namespace {

class NamesLikeLogs final : public EntryVisitor {
public:
    NamesLikeLogs(const std::string &prefix, std::vector<std::string> &names)
        : prefix_(prefix), names_(names) {}

    ALA_retCode_t visit(const FoundEntry &entry) override {
        const std::string name = entry.name;
        if (_stricmp(name.substr(0, prefix_.size()).c_str(), prefix_.c_str()) != 0)
            return ALA_N_NORMAL;
        const std::string_view tail = std::string_view(name).substr(prefix_.size());
        const bool isListed = name.starts_with(prefix_) && tail.size() <= kLongestTail;
        if (!isListed && !isAside(tail) && !isOfAnotherServer(tail))
            names_.push_back(name);
        return ALA_N_NORMAL;
    }

    void cut(int failure) override { error = failure; }

    int error = 0;

private:
    // "x.20261103" and "x.20261103.gz" belong to a server whose name ends with ".x".
    static bool isOfAnotherServer(std::string_view tail) {
        std::size_t end = tail.find('.');
        if (isLogTail(tail.substr(0, end)))
            return false;
        while (end != std::string_view::npos) {
            tail.remove_prefix(end + 1);
            end = tail.find('.');
            if (isLogTail(tail.substr(0, end)))
                return true;
        }
        return false;
    }

    const std::string &prefix_;
    std::vector<std::string> &names_;
};

} // namespace

int qvledger::findNamesLikeLogs(const char *serverName, const char *acctLogPath,
                                std::vector<std::string> &names) {
    const std::string prefix = std::string(serverName) + ".";
    NamesLikeLogs visitor(prefix, names);
    visitDirectory(acctLogPath, "", visitor);
    std::ranges::sort(names);
    return visitor.error;
}
