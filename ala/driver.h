// What a driver needs of the facility beyond ala/ala.h: what is set up before a registration, what the walk
// of a log leaves out and what it need not ask for again, logs that are read in order to be deleted, and logs
// that are checked and saved.
//
// Several drivers may work on one log directory, beside the server that writes to it.  So a log that is to be
// deleted is held against the others before anything of it is read, is kept open until it is gone, and goes
// only if its file is the one that was read and nobody has written to it since.  docs/architecture.md has the
// order of the steps.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "ala/ala.h"
#include "ala/base/registry_keys.h"
#include "platform/descriptor.h"
#include "platform/malloced.h"
#include "platform/os.h"

// ---- Before a registration ----

namespace qvledger {

// The service environment: the settings that a server's service has in the registry, copied into the process.
constexpr std::uint32_t kServerTypeSpooler = 892;
constexpr std::uint32_t kServerTypeOther = 893;

} // namespace qvledger

// The name of a server's service, a new text released with free.  0, or -1 for an unknown type, a null
// address or exhausted memory; the text is null then.
std::int32_t ALA__GetServiceName(const char *inp_serverName, std::uint32_t in_serverType,
                                 char **outpp_serviceName);

// Copies every value of the service's registry key, or of the system's one if the service has none, into the
// process environment.  0, or -1 when neither key opens, a value does not fit or memory runs out; variables
// set before that stay set.
std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName);

// One text directly followed by the other as a new text, released with free; null when memory runs out.
char *_ALA_AddChar(const char *inp_string, const char *inp_str);

// Finds the machine's domain, once for the process, with the rights in force.  Without it a registration
// does.
void ALA__FindHostDomain();

// ---- Listing ----

// Receives what the list of logs does not show.
class ALA__listingWatch {
public:
    // A log of the server that has been renamed to be deleted; its name without the directory.
    virtual void aside(const char *name) = 0;
    // The directory could not be read to its end, for the system's reason (errno): logs may be missing.
    virtual void cut(int error) = 0;

protected:
    ~ALA__listingWatch() = default;
};

// ALA_ListExistingLogsByDate with a watch.
ALA_retCode_t ALA__ListLogs(ALA_handle_t in_alaHandle, ALA__listingWatch &inout_watch,
                            dateNode **outp_dateList, ALA_name **outp_nameList);

// ---- The walk of a log ----

// A date as the number year * 10000 + month * 100 + day.
std::int32_t ALA__NumFromDate(const ALA_time *inp_date);

// How many values, and attributes, the cursors of a handle could not deliver so far.  A log whose walk raised
// this number has something in it that no report shows.  REQUIRES: a handle from ALA_Register.
std::uint64_t ALA__ValuesPassedOver(ALA_handle_t in_handle);

namespace qvledger {

// A number for the names that ALA_ListAttributesFromRecord would list with a null locale: two records of a
// handle have the same number only if they have the same list.  0: the names are not known without a list, or
// the type is unknown.  Nothing is looked up, nothing logged.  REQUIRES: a handle from ALA_Register and a
// record read with it.
std::uint64_t namesState(ALA_handle_t handle, ALA_record_t record, ALA_recAttrType_t type);

// A value's text with its length.  REQUIRES: a value of a pair from the facility.
std::string_view valueText(const attributeVal &value);

} // namespace qvledger

// ---- Logs that are read in order to be deleted ----

// What came of the wish to hold a file against other runs.
enum class ALA__holdResult : std::uint8_t {
    Held,
    NotKnown, // the system grants no locks on it
    GivenUp   // another run has it, and the caller will not wait any longer
};

// Holds the file behind a descriptor (OS_LockFile), waiting for a run that has it as long as the driver
// likes.
using ALA__holdFile = ALA__holdResult (*)(int in_fd, const char *inp_path);

// ALA_Open, with the log locked before its first record is read, but not before its access list has admitted
// the caller; a header that was changed while the caller waited is checked again.  Where the system grants no
// locks the log is opened all the same.  A log that lost its name while it was waited for is looked for
// again.  ALA_N_NORMAL with a null log when in_hold gave up.
ALA_retCode_t ALA__OpenToDelete(ALA_handle_t in_alaHandle, const ALA_time *inp_date, ALA__holdFile in_hold,
                                ALA_acctLogHandle_t *outp_logHandle);

// Is that file, open under in_fd, one of the logs that a server has in a directory, under whatever name, or
// one that is being deleted, or another server's log there?  Where not all names could be compared, any file
// that begins as a log is taken for one.
bool ALA__IsLog(const char *inp_serverName, const char *inp_acctLogPath, const OS_fileIdentity &in_file,
                std::int32_t in_fd);

// The name of an open log's file, without its directory.
const char *ALA__LogFileName(ALA_acctLogHandle_t in_log);

// True if the log's first record was asked for and there is none: the file ends behind its header.
bool ALA__HoldsNoRecord(ALA_acctLogHandle_t in_log);

// A log that was read to its end.  It keeps the file open, and held, when the log is closed.
struct ALA__readLog {
    qvledger::Descriptor file;
    qvledger::Malloced<char> path; // under which it was opened
    OS_fileIdentity identity;      // as it was before anything of it was read
    std::int64_t end;              // bytes that were read
};

// Makes one of an open log.  Null, or why it cannot be deleted.
const char *ALA__KeepRead(ALA_acctLogHandle_t in_log, ALA__readLog &outp_read);

// What the driver has to say while a log is deleted.
class ALA__deletion {
public:
    // Directly before the log goes: are its lines still safe elsewhere?  Null, or why it has to stay.
    virtual const char *objection() = 0;
    // A log that is not deleted stays under this path.
    virtual void leftAside(const char *path, const char *why) = 0;

protected:
    ~ALA__deletion() = default;
};

// ALA_Delete for a log that was read.  ALA_N_NORMAL with *outp_kept 1, and a log entry that says why, when it
// stays.
ALA_retCode_t ALA__DeleteRead(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                              const ALA__readLog &in_read, ALA__deletion &inout_deletion,
                              std::int32_t *outp_kept);

// Gives logs their names back which a run that ended early was about to delete.  The log tells of each; what
// goes wrong stays as it is.
void ALA__PutBackLogs(ALA_handle_t in_alaHandle, ALA__deletion &inout_deletion);

// ---- Checking and saving logs ----
//
// A log is opened by its file name, under its own access list; whoever is not admitted learns nothing of it.
// It is looked at as it is when it is opened: what a server appends meanwhile is left for the next time.
// docs/architecture.md tells how records are found again behind damage.

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
