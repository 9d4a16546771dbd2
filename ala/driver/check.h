// Checking and saving logs.
//
// A log is opened by its file name, under its own access list; whoever is not admitted learns nothing of it.
// It is looked at as it is when it is opened: what a server appends meanwhile is left for the next time.
// docs/architecture.md tells how records are found again behind damage.
#pragma once

#include <array>
#include <cstdint>

#include "ala/ala.h"

struct ALA__checkedLog; // an open log

// Why a report would pass over a value.
enum ALA__passedOver : std::uint32_t {
    ALA__PASSED_UNPACK,   // its bytes are none of its type
    ALA__PASSED_NAME,     // an object identifier without a name
    ALA__PASSED_TIME,     // a time that cannot be converted
    ALA__PASSED_MEMORY,   // memory ran out
    ALA__PASSED_TOO_LONG, // of a record too long to be read here
    ALA__PASSED_OTHER,
    ALA__PASSED_REASONS
};

// What a log holds.
struct ALA__logSummary {
    std::uint32_t version;
    std::uint32_t created;       // seconds since 1970; 0 before version 2
    std::uint32_t accessEntries; // of its access list
    std::uint64_t records;       // intact ones
    std::uint64_t documents;     // in them
    std::uint64_t values;        // in them
    std::int64_t bytes;
    std::int64_t firstDamage; // offset; -1: none
    std::int64_t strayBytes;  // that belong to no record
    const char *fault;        // what is wrong at the first damage; null: nothing
    bool isCut;               // all that is wrong is that the last record is not complete
    bool headerIsDamaged;     // the version in it is not that of its records
    std::array<std::uint64_t, ALA__PASSED_REASONS> passedOver; // values and attributes by reason
};

// Told and asked while a log is worked on.
class ALA__checkWatch {
public:
    // Up to where the log was worked on.  False: give up.
    virtual bool goOn(std::int64_t position) = 0;
    // One more intact record.
    virtual void record() = 0;
    // A range of bytes that belongs to no intact record.
    virtual void stray(std::int64_t begin, std::int64_t end) = 0;

protected:
    ~ALA__checkWatch() = default;
};

// Opens a log of the registered directory by its file name.  It is closed with ALA__CloseChecked.
// ALA_A_FAIL_TO_OPEN_LOG_FILE: there is none, or it cannot be opened, with the system's reason in errno; 0
// there: it is no file on a disk.
// ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: its access list does not admit the caller.
// ALA_A_NO_MORE_JOB: the file is empty, or ends inside its header.
// ALA_A_FAIL_READ_LOG_FILE: it cannot be read, with the system's reason in errno; 0 there: as the next two.
// ALA_A_BAD_NUMATTR_VALUE, ALA_A_ODPUNPACK_ERROR: its header is damaged.
// ALA_A_SYSTEM_ERR: the caller's identity cannot be found out.
// ALA_A_UNKNOWN_ERR: the path cannot be converted.
// ALA_A_OUT_OF_MEMORY.
ALA_retCode_t ALA__OpenToCheck(ALA_handle_t in_alaHandle, const char *inp_name, ALA__checkedLog **outp_log);

// Null is fine.
void ALA__CloseChecked(ALA__checkedLog *inp_log);

// Finds all intact records, and renders every value of them.
// ALA_A_FAIL_READ_LOG_FILE: the file cannot be read to its end; the system's reason, if any, is in errno.
// ALA_A_LAST_ATTRIBUTE: the watch gave up.
// ALA_A_OUT_OF_MEMORY.
ALA_retCode_t ALA__CheckLog(ALA_handle_t in_alaHandle, ALA__checkedLog *inoutp_log,
                            ALA__checkWatch &inout_watch, ALA__logSummary *outp_summary);

// Writes the header and all intact records to a new file, with the caller's own rights, and has it on the
// disk with the original's owner, mode and times, as far as the caller may give them.  It has the name when
// it is whole, and not before.  No file is left on failure, but for one code.
// ALA_A_FAIL_TO_OPEN_LOG_FILE: the name is taken, or the file cannot be made; the reason is in errno.
// ALA_A_SYSTEM_ERR: it cannot be written; the reason is in errno.
// ALA_A_UNKNOWN_ERR: it is there and whole, but its folder's entry may not be on the disk; the reason is in
// errno.
// Others as ALA__CheckLog.
ALA_retCode_t ALA__SaveLog(ALA__checkedLog *inoutp_log, const char *inp_path, ALA__checkWatch &inout_watch);
