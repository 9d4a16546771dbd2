#include "ala/directory/scan.h"

#include <cstdlib>
#include <cstring>

#include "ala/directory/directory.h"
#include "ala/environment.h"
#include "ala/trace.h"
#include "service/system.h"

constexpr std::size_t kLongestTail = 8;

namespace {

struct DirectoryCloser {
    void operator()(SYSU_dir *in_directory) const { SYSU_Closedir(in_directory); }
};

} // namespace

// Dates a log by its tail.  False for a log of the day in progress that cannot be examined.
static bool dateLog(const char *inp_tail, const char *inp_path, std::int32_t *outp_date) {
    if (std::strcmp(inp_tail, "current") == 0)
        return ALA__GetDateFromStat(inp_path, outp_date) == ALA_N_NORMAL;
    *outp_date = static_cast<std::int32_t>(std::atol(inp_tail));
    return true;
}

ALA_retCode_t scanLogs(const char *inp_svrName, const char *inp_acctLogPath, const ScanRules &in_rules,
                       LogVisitor &inoutp_visitor) {
    if (inp_svrName == nullptr || inp_acctLogPath == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "%s", in_rules.invalidArgument);
    const Malloced<char> prefix(_ALA_AddChar(inp_svrName, "."));
    if (prefix == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", in_rules.noMemory);
    const std::size_t prefixLength = std::strlen(prefix.get());
    Malloced<char> path;
    if (!ALA__ConvertPath(inp_acctLogPath, path))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "%s", in_rules.pathNotConverted);
    const std::unique_ptr<SYSU_dir, DirectoryCloser> directory(SYSU_Opendir(path.get()));
    if (directory == nullptr)
        return ALA_FAIL(in_rules.codeOfDirectory, "%s", in_rules.directoryNotOpened);

    SYSU_dirent entry;
    SYSU_dirent *found = nullptr;
    for (;;) {
        if (const std::int32_t error = SYSU_Readdir_r(directory.get(), &entry, &found); error != 0)
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s is not read to its end: %s", path.get(),
                            std::strerror(error));
        if (found == nullptr)
            return ALA_N_NORMAL;
        if (std::strncmp(entry.d_name, prefix.get(), prefixLength) != 0)
            continue;
        const char *tail = entry.d_name + prefixLength;
        if (std::strlen(tail) > kLongestTail)
            continue;
        const Malloced<char> file = ALA__PathInDirectory(path.get(), entry.d_name);
        if (file == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", in_rules.noMemory);
        std::int32_t date = 0;
        if (!dateLog(tail, file.get(), &date)) {
            if (in_rules.notDated == nullptr)
                continue;
            return ALA_FAIL(ALA_A_FAIL_TO_GET_TIME, "%s", in_rules.notDated);
        }
        if (const ALA_retCode_t result = inoutp_visitor.visit({entry.d_name, date}); result != ALA_N_NORMAL)
            return result;
    }
}
