// Checks logs, and saves the intact records of damaged ones.
//
// A log is opened by its file name, if its access list admits the caller.  Bytes that the server appends
// after that are ignored.  docs/architecture.md, "Damaged logs", explains how records are found after damage.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "ala/ala.h"

namespace qvledger {

enum class CheckOutcome : std::uint8_t {
    Done,
    GaveUp,      // CheckWatch::goOn returned false
    CannotOpen,  // the file does not exist or cannot be opened
    NotAFile,    // not a regular file
    NotAdmitted, // the access list does not admit the caller
    CannotRead,
    HeaderIsCut, // the file is empty or ends inside its header
    HeaderIsDamaged,
    Exists,      // a file with the copy's name exists
    CannotWrite, // the copy cannot be created or written
    NotSynced,   // the copy is complete, but a crash may lose its name
    Failed       // see CheckResult::code
};

struct CheckResult {
    CheckOutcome outcome;
    ALA_retCode_t code; // ALA_N_NORMAL for Done and GaveUp
    int error;          // errno; 0: none
};

// Why a report skips a value.
enum class SkipReason : std::uint8_t {
    Unpack,  // its bytes do not match its type
    Name,    // an object identifier has no name
    Time,    // a time cannot be converted
    Memory,  // memory ran out
    TooLong, // its record is too long to be rendered
    Other
};
constexpr std::size_t kSkipReasons = 6;

// The contents of a log.
struct LogSummary {
    std::uint32_t version;
    std::uint32_t created;       // seconds since 1970; 0 before version 2
    std::uint32_t accessEntries; // entries of its access list
    std::uint64_t records;       // intact records
    std::uint64_t documents;     // in intact records
    std::uint64_t values;        // in intact records
    std::int64_t bytes;
    std::int64_t firstDamage; // offset; -1: none
    std::int64_t strayBytes;  // bytes that belong to no intact record
    std::int64_t unsearched;  // stray bytes not searched, because that would take too long
    const char *fault;        // description of the first damage; null: none
    bool isCut;               // the only damage is an incomplete last record
    bool headerIsDamaged;     // its version is not that of the records
    std::array<std::uint64_t, kSkipReasons> skipped; // values and attributes by reason
};

// How the record after a range of stray bytes was found.
enum class FoundNext : std::uint8_t {
    InStep,    // it begins where sound bytes end
    OutOfStep, // by its contents
    None       // no record follows
};

// Called while a log is checked or saved.
class CheckWatch {
public:
    // Reports the position reached.  Returns false to give up.
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

// Opens a log of the registered directory by its file name.  Done, CannotOpen, NotAFile, NotAdmitted,
// CannotRead, HeaderIsCut, HeaderIsDamaged, or Failed with ALA_A_SYSTEM_ERR (the caller's identity cannot be
// determined), ALA_A_UNKNOWN_ERR (the path cannot be converted), ALA_A_OUT_OF_MEMORY or ALA_A_NOT_REGISTER.
CheckResult openToCheck(ALA_handle_t handle, const char *name, OpenCheckedLog &log);

// Finds all intact records and renders all their values.  Done, GaveUp, CannotRead, or Failed with
// ALA_A_OUT_OF_MEMORY.
CheckResult checkLog(ALA_handle_t handle, CheckedLog &log, CheckWatch &watch, LogSummary &summary);

// Writes the header and all intact records to a new file, gives it the original's owner, mode and times where
// the caller may set them, and syncs it.  The file gets its name when it is complete; unless the outcome is
// Done or NotSynced, no file remains.  Done, GaveUp, CannotRead, Exists, CannotWrite, NotSynced, or Failed
// with ALA_A_OUT_OF_MEMORY.
CheckResult saveLog(CheckedLog &log, const char *path, CheckWatch &watch);

} // namespace qvledger
