// Removal of the log of a past day.
#include "ala/directory/directory.h"

#include "ala/handle.h"
#include "ala/trace.h"
#include "service/clock.h"
#include "service/system.h"

namespace {

enum class Verdict : std::uint8_t { Remove, Keep, Missing };

} // namespace

static ALA_retCode_t refuseToday(const ALA_time *inp_date) {
    const StatusList status;
    GEN_generalizedTime *now = nullptr;
    if (GENU_GetCurrentTime(status, &now, 0) != 0)
        return ALA_FAIL(ALA_A_FAIL_TO_GET_TIME,
                        "GENU_GetCurrentTime failed in ALA_Delete; ALA_A_FAIL_TO_GET_TIME");
    const GEN_generalizedTime today = *now;
    GEN_DeleteGeneralizedTime(status, now, nullptr);
    if (inp_date->year != today.year || inp_date->month != today.month || inp_date->day != today.day)
        return ALA_N_NORMAL;
    return ALA_FAIL(ALA_A_TRY_TO_DELETE_CUR_DAY_LOG,
                    "Trying to delete current day's file, year: %d, month: %d, day: %din ALA_Delete; "
                    "ALA_A_TRY_TO_DELETE_CUR_DAY_LOG",
                    today.year, today.month, today.day);
}

static bool isSameFile(const OS_fileIdentity &in_one, const OS_fileIdentity &in_two) {
    return in_one.device == in_two.device && in_one.number == in_two.number;
}

// Why the file of that name must stay, or null.  The descriptor holds it against writers from then on, so
// that what was found stays true until it is removed.
static const char *reasonToKeep(const char *inp_path, const OS_fileIdentity &in_read, Descriptor &outp_held) {
    OS_fileIdentity present = {};
    // The name first: behind a symbolic link there is another file than the one to be removed.
    if (OS_IdentifyName(inp_path, &present) != 0 || !isSameFile(present, in_read))
        return "it is not the file that was read";
    outp_held.reset(SYSU_Open(inp_path, 0));
    if (!outp_held.isOpen())
        return "it cannot be opened";
    if (OS_HoldAgainstWriters(outp_held.get()) == 1)
        return "another program has it open for writing";
    if (OS_IdentifyDescriptor(outp_held.get(), &present) != 0 || !isSameFile(present, in_read))
        return "it is not the file that was read";
    return present.size != in_read.size ? "it is not as long as what was read of it" : nullptr;
}

// May the file of that name go, given what was read?  Without a description of it, whatever is there may.
static Verdict compareWithRead(const char *inp_path, const OS_fileIdentity *inp_read, Descriptor &outp_held) {
    if (inp_read == nullptr)
        return Verdict::Remove;
    OS_fileIdentity present = {};
    if (OS_IdentifyName(inp_path, &present) != 0)
        return Verdict::Missing;
    const char *why = reasonToKeep(inp_path, *inp_read, outp_held);
    if (why == nullptr)
        return Verdict::Remove;
    LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s is not deleted: %s", inp_path, why);
    return Verdict::Keep;
}

static ALA_retCode_t deleteLog(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                               const OS_fileIdentity *inp_read, std::int32_t *outp_kept) {
    const FuncTrace trace("ALA_Delete");
    if (const ALA_retCode_t valid = ALA__CheckHandle(in_alaHandle, "ALA_Delete"); valid != ALA_N_NORMAL)
        return valid;
    if (inp_date == nullptr)
        return ALA_FAIL(ALA_A_INVALID_ARG, "inp_date is NULL in ALA_Delete; ALA_A_INVALID_ARG");
    const Malloced<char> path = ALA__DatedLogPath(in_alaHandle->acctLogPath, in_alaHandle->svrName, inp_date);
    if (path == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for logName in ALA_Delete; ALA_A_OUT_OF_MEMORY");
    if (const ALA_retCode_t result = refuseToday(inp_date); result != ALA_N_NORMAL)
        return result;
    Malloced<char> converted;
    if (!ALA__ConvertPath(path.get(), converted))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "FA_ConvertFilePath failed in ALA_Delete; ALA_A_UNKNOWN_ERR");

    Descriptor held;
    const Verdict verdict = compareWithRead(converted.get(), inp_read, held);
    if (verdict == Verdict::Keep) {
        *outp_kept = 1;
        return ALA_N_NORMAL;
    }
    ALA_DETAIL("Unlinking %s", converted.get());
    // A file that is missing now may be there in a moment, and would then be one that nobody read.
    if (verdict == Verdict::Missing || _unlink(converted.get()) == -1)
        return ALA_FAIL(ALA_A_FAIL_TO_UNLINK, "Failed to unlink file in ALA_Delete; ALA_A_FAIL_TO_UNLINK");
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_Delete(ALA_handle_t in_alaHandle, const ALA_time *inp_date) {
    std::int32_t kept = 0;
    return deleteLog(in_alaHandle, inp_date, nullptr, &kept);
}

ALA_retCode_t ALA__DeleteRead(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                              const OS_fileIdentity *inp_read, std::int32_t *outp_kept) {
    *outp_kept = 0;
    return deleteLog(in_alaHandle, inp_date, inp_read, outp_kept);
}
