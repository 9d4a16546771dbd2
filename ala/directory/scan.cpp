#include "ala/directory/scan.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include "ala/base/concatenate.h"
#include "ala/base/trace.h"
#include "ala/directory/dates.h"
#include "ala/directory/paths.h"
#include "service/system.h"

using namespace qvledger;

bool qvledger::isAside(std::string_view tail) {
    return tail.ends_with(kAside) && tail.size() <= kLongestTail + kAside.size();
}

namespace {

struct DirectoryCloser {
    void operator()(SYSU_dir *directory) const { SYSU_Closedir(directory); }
};
using Directory = std::unique_ptr<SYSU_dir, DirectoryCloser>;

} // namespace

// Visits the entries of an open directory whose names begin with the prefix.  Stops after a visit that
// returns a code other than ALA_N_NORMAL, and returns that code; else ALA_N_NORMAL.  `path` is the
// directory's path, for log entries and for the visitor.
static ALA_retCode_t visitEntries(SYSU_dir *directory, const char *path, const char *prefix,
                                  EntryVisitor &visitor) {
    const std::size_t prefixLength = std::strlen(prefix);
    SYSU_dirent entry;
    SYSU_dirent *found = nullptr;
    for (;;) {
        if (const std::int32_t error = SYSU_Readdir_r(directory, &entry, &found); error != 0) {
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s is not read completely: %s", path,
                            std::strerror(error));
            visitor.cut(error);
        }
        if (found == nullptr)
            return ALA_N_NORMAL;
        if (std::strncmp(entry.d_name, prefix, prefixLength) != 0)
            continue;
        if (const ALA_retCode_t result = visitor.visit({path, entry.d_name, entry.d_name + prefixLength});
            result != ALA_N_NORMAL)
            return result;
    }
}

void qvledger::visitDirectory(const char *folder, const char *prefix, EntryVisitor &visitor) {
    Malloced<char> path;
    const bool isConverted = convertPath(folder, path);
    const Directory directory(isConverted ? SYSU_Opendir(path.get()) : nullptr);
    if (directory != nullptr)
        static_cast<void>(
            visitEntries(directory.get(), path.get(), prefix, visitor)); // the failure is already logged
}

namespace {

// Passes each log and its date to a LogVisitor.
class DatedLogs final : public EntryVisitor {
public:
    DatedLogs(const ScanRules &rules, LogVisitor &visitor) : rules_(rules), visitor_(visitor) {}

    ALA_retCode_t visit(const FoundEntry &entry) override {
        if (isAside(entry.tail))
            visitor_.aside(entry.name);
        if (std::strlen(entry.tail) > kLongestTail)
            return ALA_N_NORMAL;
        const Malloced<char> file = pathInDirectory(entry.directory, entry.name);
        if (file == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", rules_.noMemory);
        std::int32_t date = 0;
        if (dateOfLog(entry.tail, file.get(), &date) == ALA_N_NORMAL)
            return visitor_.visit({entry.name, date});
        if (date == kOffTheCalendar)
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                            "%s is skipped: the time of its last change is not a valid date", file.get());
        if (date == kOffTheCalendar || rules_.notDated == nullptr)
            return ALA_N_NORMAL;
        return ALA_FAIL(ALA_A_FAIL_TO_GET_TIME, "%s", rules_.notDated);
    }

    void cut(int error) override { visitor_.cut(error); }

private:
    const ScanRules &rules_;
    LogVisitor &visitor_;
};

} // namespace

ALA_retCode_t qvledger::scanLogs(const char *svrName, const char *acctLogPath, const ScanRules &rules,
                                 LogVisitor &visitor) {
    if (svrName == nullptr || acctLogPath == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "%s", rules.invalidArgument);
    const Malloced<char> prefix(_ALA_AddChar(svrName, "."));
    if (prefix == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", rules.noMemory);
    Malloced<char> path;
    if (!convertPath(acctLogPath, path))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "%s", rules.pathNotConverted);
    const Directory directory(SYSU_Opendir(path.get()));
    if (directory == nullptr) {
        ALA_DETAIL("%s cannot be opened: %s\n", path.get(), std::strerror(errno));
        return ALA_FAIL(rules.codeOfDirectory, "%s", rules.directoryNotOpened);
    }
    DatedLogs logs(rules, visitor);
    return visitEntries(directory.get(), path.get(), prefix.get(), logs);
}
