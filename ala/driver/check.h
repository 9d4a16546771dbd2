// Checking logs, and saving the intact records of damaged ones.
//
// A log is opened by its file name, under its own access list; a caller who is not admitted learns nothing of
// it.  What a server appends after that is left for the next time.  docs/architecture.md, "Damaged logs",
// explains how records are found again after damage.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "ala/ala.h"

namespace qvledger {

enum class CheckOutcome : std::uint8_t {
    Done,
    GaveUp,      // the watch did
    CannotOpen,  // the file does not exist or cannot be opened
    NotAFile,    // on a disk: a folder, a device, a pipe
    NotAdmitted, // the access list does not admit the caller
    CannotRead,
    HeaderIsCut, // the file is empty or ends inside its header
    HeaderIsDamaged,
    Exists,      // a file has the copy's name already
    CannotWrite, // the copy cannot be made or written
    NotSynced,   // the copy is there and whole, but its folder's entry may not be on the disk
    Failed       // for a reason that only the code gives
};

struct CheckResult {
    CheckOutcome outcome;
    ALA_retCode_t code; // ALA_N_NORMAL for Done and GaveUp
    int error;          // the system's reason as errno; 0: none
};

// Why a report skips a value.
enum class SkipReason : std::uint8_t {
    Unpack,  // its bytes do not match its type
    Name,    // an object identifier without a name
    Time,    // a time that cannot be converted
    Memory,  // memory ran out
    TooLong, // in a record too long to be rendered here
    Other
};
constexpr std::size_t kSkipReasons = 6;

// What a log contains.
struct LogSummary {
    std::uint32_t version;
    std::uint32_t created;       // seconds since 1970; 0 before version 2
    std::uint32_t accessEntries; // of its access list
    std::uint64_t records;       // intact ones
    std::uint64_t documents;     // in them
    std::uint64_t values;        // in them
    std::int64_t bytes;
    std::int64_t firstDamage; // offset; -1: none
    std::int64_t strayBytes;  // that belong to no record
    std::int64_t unsearched;  // of these, bytes that were skipped unseen: a search would take too long
    const char *fault;        // what is wrong at the first damage; null: nothing
    bool isCut;               // only the last record is incomplete
    bool headerIsDamaged;     // the version in it is not that of its records
    std::array<std::uint64_t, kSkipReasons> skipped; // values and attributes by reason
};

// How the record after a range of stray bytes was found.
enum class FoundNext : std::uint8_t {
    InStep,    // the bytes before it are sound and end where it begins
    OutOfStep, // by what it looks like
    None       // there is none
};

// Called while a log is checked or saved.
class CheckWatch {
public:
    // The position reached.  False: give up.
    virtual bool goOn(std::int64_t position) = 0;
    // One more intact record.
    virtual void record() = 0;
    // A range of bytes that belongs to no intact record.
    virtual void stray(std::int64_t begin, std::int64_t end, FoundNext next) = 0;

protected:
    ~CheckWatch() = default;
};

struct CheckedLog; // an open log

struct CloseChecked {
    void operator()(CheckedLog *log) const;
};
using OpenCheckedLog = std::unique_ptr<CheckedLog, CloseChecked>;

// Opens a log of the registered directory by its file name.  Also CannotOpen, NotAFile, NotAdmitted,
// CannotRead, HeaderIsCut, HeaderIsDamaged, and Failed: ALA_A_SYSTEM_ERR, the caller's identity is unknown;
// ALA_A_UNKNOWN_ERR, the path cannot be converted; ALA_A_OUT_OF_MEMORY; the codes for an invalid handle.
CheckResult openToCheck(ALA_handle_t handle, const char *name, OpenCheckedLog &log);

// Finds all intact records, and renders every value of them.  Also GaveUp, CannotRead, and Failed:
// ALA_A_OUT_OF_MEMORY.
CheckResult checkLog(ALA_handle_t handle, CheckedLog &log, CheckWatch &watch, LogSummary &summary);

// Writes the header and all intact records to a new file, with the caller's own rights, and syncs it with the
// original's owner, mode and times, as far as the caller may set them.  The file gets its name once it is
// whole; without Done or NotSynced no file is left.  Also GaveUp, CannotRead, Exists, CannotWrite, NotSynced,
// and Failed: ALA_A_OUT_OF_MEMORY.
CheckResult saveLog(CheckedLog &log, const char *path, CheckWatch &watch);

} // namespace qvledger
