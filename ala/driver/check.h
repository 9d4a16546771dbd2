// Checks logs, and saves the intact records of damaged logs.
//
// A log is opened by its file name if its access list admits the user.  Bytes that the server appends to the
// open log are ignored.  docs/architecture.md, "Damaged logs", explains how records are found after damage.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "ala/ala.h"

namespace qvledger {

enum class CheckOutcome : std::uint8_t {
    Done,
    GaveUp,          // CheckWatch::goOn returned false
    CannotOpen,      // the file does not exist or cannot be opened
    NotAFile,        // not a regular file
    NotAdmitted,     // the access list does not admit the user
    CannotRead,      // reading the log failed
    HeaderIsCut,     // the file is empty or ends inside its header
    HeaderIsDamaged, // the header has invalid contents
    Exists,          // a file with the name of the copy exists already
    CannotWrite,     // the copy cannot be created or written
    NotSynced,       // the copy is complete, but its folder cannot be synced: a crash may lose the name
    Failed           // CheckResult::code has the reason
};

struct CheckResult {
    CheckOutcome outcome;
    ALA_retCode_t code; // ALA_N_NORMAL for Done and GaveUp
    int error;          // errno; 0: no system call failed, or its error is not known
};

// Why a report skips a value.
enum class SkipReason : std::uint8_t {
    Unpack,  // the bytes do not match the value's type
    Name,    // an object identifier has no name
    Time,    // a time cannot be converted
    Memory,  // memory ran out
    TooLong, // the record is too long to be rendered
    Other
};
constexpr std::size_t kSkipReasons = 6;

// The contents of a log.
struct LogSummary {
    std::uint32_t version;
    std::uint32_t created;       // time of creation, in seconds since 1970; 0 before version 2
    std::uint32_t accessEntries; // number of access list entries
    std::uint64_t records;       // number of intact records
    std::uint64_t documents;     // number of documents in intact records
    std::uint64_t values;        // number of values in intact records
    std::int64_t bytes;          // size of the log
    std::int64_t firstDamage;    // offset of the first damage; -1: no damage
    std::int64_t strayBytes;     // number of bytes that belong to no intact record
    std::int64_t unsearched;     // number of stray bytes not searched, because the search would take too long
    const char *fault;           // description of the first damage; null: no damage
    bool isCut;                  // the only damage is an incomplete last record
    bool headerIsDamaged;        // the version in the header does not fit the records
    // Numbers of skipped values and attributes, indexed by reason.
    std::array<std::uint64_t, kSkipReasons> skipped;
};

// How the record after a range of stray bytes was found.
enum class FoundNext : std::uint8_t {
    InStep,    // the header, a record or a sound attribute ends where the record begins
    OutOfStep, // the search recognised the record by its contents
    None       // no record follows
};

// Called while a log is checked or saved; record() only while it is checked.
class CheckWatch {
public:
    // Reports the position that the search has reached.  Return false to give up.
    virtual bool goOn(std::int64_t position) = 0;
    // Reports an intact record.
    virtual void record() = 0;
    // Reports a range of bytes that belongs to no intact record.
    virtual void stray(std::int64_t begin, std::int64_t end, FoundNext next) = 0;

protected:
    ~CheckWatch() = default;
};

struct CheckedLog; // an open log

struct CloseChecked {
    void operator()(CheckedLog *log) const;
};
using OpenCheckedLog = std::unique_ptr<CheckedLog, CloseChecked>;

// Opens a log of the registered directory by its file name.  Outcomes: Done, CannotOpen, NotAFile,
// NotAdmitted, CannotRead, HeaderIsCut, HeaderIsDamaged, or Failed.  Failed has the code ALA_A_SYSTEM_ERR
// (the user's identity cannot be determined), ALA_A_UNKNOWN_ERR (the path cannot be converted, or the
// operating system is unknown), ALA_A_OUT_OF_MEMORY or ALA_A_NOT_REGISTER.  The log is null unless the
// outcome is Done.
CheckResult openToCheck(ALA_handle_t handle, const char *name, OpenCheckedLog &log);

// Finds the intact records of a log, renders their values, and fills the summary.  Outcomes: Done, GaveUp,
// CannotRead, or Failed with ALA_A_OUT_OF_MEMORY.
CheckResult checkLog(ALA_handle_t handle, CheckedLog &log, CheckWatch &watch, LogSummary &summary);

// Writes the header and the records that checkLog finds to a new file, and syncs the file.  Gives the file
// the owner, mode and times of the log, if the user is allowed to set them.  The file gets its name when it
// is complete.  Outcomes: Done, GaveUp, CannotRead, Exists, CannotWrite, NotSynced, or Failed with
// ALA_A_OUT_OF_MEMORY.  No new file remains unless the outcome is Done or NotSynced.
CheckResult saveLog(CheckedLog &log, const char *path, CheckWatch &watch);

} // namespace qvledger
