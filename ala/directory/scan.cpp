#include "ala/directory/scan.h"

#include <cstdlib>
#include <cstring>

#include "ala/base/concatenate.h"
#include "ala/base/trace.h"
#include "ala/directory/directory.h"

// Dates a log by its tail, and that of the day in progress by its last change.
static FileDate dateLog(const char *inp_tail, const char *inp_path, std::int32_t *outp_date) {
    if (std::strcmp(inp_tail, "current") == 0)
        return ALA__DateFile(inp_path, outp_date);
    *outp_date = static_cast<std::int32_t>(std::atol(inp_tail));
    return FileDate::Known;
}

ALA_retCode_t visitEntries(SYSU_dir *in_directory, const char *inp_path, const char *inp_prefix,
                           EntryVisitor &inoutp_visitor) {
    const std::size_t prefixLength = std::strlen(inp_prefix);
    SYSU_dirent entry;
    SYSU_dirent *found = nullptr;
    for (;;) {
        if (const std::int32_t error = SYSU_Readdir_r(in_directory, &entry, &found); error != 0)
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s is not read to its end: %s", inp_path,
                            std::strerror(error));
        if (found == nullptr)
            return ALA_N_NORMAL;
        if (std::strncmp(entry.d_name, inp_prefix, prefixLength) != 0)
            continue;
        if (const ALA_retCode_t result = inoutp_visitor.visit({entry.d_name, entry.d_name + prefixLength});
            result != ALA_N_NORMAL)
            return result;
    }
}

namespace {

// Passes on what is a log, with its date.
class DatedLogs final : public EntryVisitor {
public:
    DatedLogs(const char *inp_directory, const ScanRules &in_rules, LogVisitor &inout_visitor)
        : directory(inp_directory), rules(in_rules), visitor(inout_visitor) {}

    ALA_retCode_t visit(const FoundEntry &in_entry) override {
        if (std::strlen(in_entry.tail) > kLongestTail)
            return ALA_N_NORMAL;
        const Malloced<char> file = ALA__PathInDirectory(directory, in_entry.name);
        if (file == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", rules.noMemory);
        std::int32_t date = 0;
        const FileDate dated = dateLog(in_entry.tail, file.get(), &date);
        if (dated == FileDate::Known)
            return visitor.visit({in_entry.name, date});
        if (dated == FileDate::OffTheCalendar)
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__,
                            "%s is left out: the time of its last change is off the calendar", file.get());
        if (dated == FileDate::OffTheCalendar || rules.notDated == nullptr)
            return ALA_N_NORMAL;
        return ALA_FAIL(ALA_A_FAIL_TO_GET_TIME, "%s", rules.notDated);
    }

private:
    const char *directory;
    const ScanRules &rules;
    LogVisitor &visitor;
};

} // namespace

ALA_retCode_t scanLogs(const char *inp_svrName, const char *inp_acctLogPath, const ScanRules &in_rules,
                       LogVisitor &inoutp_visitor) {
    if (inp_svrName == nullptr || inp_acctLogPath == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "%s", in_rules.invalidArgument);
    const Malloced<char> prefix(_ALA_AddChar(inp_svrName, "."));
    if (prefix == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", in_rules.noMemory);
    Malloced<char> path;
    if (!ALA__ConvertPath(inp_acctLogPath, path))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "%s", in_rules.pathNotConverted);
    const Directory directory(SYSU_Opendir(path.get()));
    if (directory == nullptr)
        return ALA_FAIL(in_rules.codeOfDirectory, "%s", in_rules.directoryNotOpened);
    DatedLogs logs(path.get(), in_rules, inoutp_visitor);
    return visitEntries(directory.get(), path.get(), prefix.get(), logs);
}
