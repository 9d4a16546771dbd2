// Opens logs and checks them.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/directory/paths.h"
#include "ala/log/header.h"
#include "ala/salvage/checked_log.h"
#include "ala/salvage/summary.h"
#include "platform/byte_order.h"
#include "service/system.h"

using namespace qvledger;

// Rendering a record may take at most kMostMemory bytes.  The estimate is four times the record's bytes, for
// the record and a document's copy of it, plus 36 times the bytes of the longest attribute, because a text
// can be many times as long as its packed value.
constexpr std::int64_t kMostMemory = 48 << 20;
constexpr std::int64_t kOfRecord = 4;
constexpr std::int64_t kOfAttribute = 36;

void CloseChecked::operator()(CheckedLog *log) const {
    if (log->log.fd != -1)
        static_cast<void>(_close(log->log.fd)); // opened for reading, so nothing can be lost
    delete log;
}

static CheckResult openFile(ALA_handle_t handle, const char *name, std::int32_t *fd) {
    const Malloced<char> path = pathInDirectory(handle->acctLogPath, name);
    if (path == nullptr)
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory for the path of %s", name), 0};
    Malloced<char> converted;
    if (!convertPath(path.get(), converted))
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_UNKNOWN_ERR, "the path of %s cannot be converted", name),
                0};
    *fd = SYSU_Open(converted.get(), 0);
    if (*fd != -1)
        return {};
    const int error = errno;
    return {
        CheckOutcome::CannotOpen,
        ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s cannot be opened: %s", path.get(), std::strerror(error)),
        error};
}

// Reads the words of the header besides the access list entries.  lookUpPermission has already read the
// header successfully.
static CheckResult readHeaderWords(CheckedLog &log) {
    LogBytes bytes(log.log.fd, log.size);
    const bool hasDate = log.log.verNum >= kVersionWithDate;
    const std::size_t size = (hasDate ? 3 : 2) * sizeof(std::uint32_t);
    const std::uint8_t *at = bytes.at(0, size + sizeof(attrTag));
    if (at == nullptr)
        return {CheckOutcome::CannotRead,
                ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "the header cannot be read again"), bytes.error()};
    std::uint32_t created = 0;
    if (hasDate)
        std::memcpy(&created, at + sizeof created, sizeof created);
    log.created = fromNetworkOrder(created);
    attrTag tag;
    std::memcpy(&tag, at + size, sizeof tag);
    log.accessEntries = tag.numAttrVal;
    return {};
}

// Is only the end of the header missing?  A length that reaches far past the end is damage.
static bool isCutHeader(int fd, std::int64_t size) {
    constexpr std::uint32_t kLongestEntry = 64 << 10;
    LogBytes bytes(fd, size);
    const auto wordAt = [&bytes](std::int64_t position, std::uint32_t *word) {
        const std::uint8_t *at = bytes.at(position, kWord);
        if (at != nullptr)
            std::memcpy(word, at, kWord);
        return at != nullptr;
    };
    std::uint32_t version = 0, entries = 0, length = 0;
    if (!wordAt(0, &version))
        return !bytes.failed();
    const std::int64_t tag = kWord * (fromNetworkOrder(version) >= kVersionWithDate ? 3 : 2);
    if (size < tag + kTagSize || !wordAt(tag, &entries))
        return !bytes.failed();
    std::int64_t at = tag + kTagSize;
    for (std::uint32_t i = 0; i < entries; ++i) {
        if (!wordAt(at, &length))
            return !bytes.failed();
        at += kWord + length;
        if (at > size)
            return length <= kLongestEntry;
    }
    return false;
}

// The result after lookUpPermission failed.
static CheckResult headerFailure(const CheckedLog &log, const char *name, ALA_retCode_t code, int error) {
    switch (code) {
    case ALA_A_FAIL_READ_LOG_FILE:
        if (error != 0)
            return {CheckOutcome::CannotRead, code, error};
        if (isCutHeader(log.log.fd, log.size))
            return {CheckOutcome::HeaderIsCut, ALA_FAIL(code, "%s ends inside its header", name), 0};
        return {CheckOutcome::HeaderIsDamaged, code, 0};
    case ALA_A_BAD_NUMATTR_VALUE:
    case ALA_A_ODPUNPACK_ERROR:
        return {CheckOutcome::HeaderIsDamaged, code, 0};
    default:
        return {CheckOutcome::Failed, code, error};
    }
}

CheckResult qvledger::openToCheck(ALA_handle_t handle, const char *name, OpenCheckedLog &opened) {
    const FuncTrace trace("openToCheck");
    opened.reset();
    if (const ALA_retCode_t valid = checkHandle(handle, "openToCheck"); valid != ALA_N_NORMAL)
        return {CheckOutcome::Failed, valid, 0};
    handle->plainDays.checkZone();
    OpenCheckedLog log(new (std::nothrow) CheckedLog);
    if (log == nullptr)
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to check %s", name), 0};
    log->log.fd = -1;
    log->log.pid = _getpid();
    if (const CheckResult result = openFile(handle, name, &log->log.fd); result.outcome != CheckOutcome::Done)
        return result;
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(log->log.fd, &identity) != 0 || !identity.regular)
        return {CheckOutcome::NotAFile,
                ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s is not a regular file", name), 0};
    log->log.bytes = LogFile(log->log.fd);
    log->size = identity.size;
    std::int32_t admitted = 0;
    if (const ALA_retCode_t code = lookUpPermission(log->log.bytes, &admitted, &log->log.verNum);
        code != ALA_N_NORMAL)
        return headerFailure(*log, name, code, errno);
    if (admitted == 0)
        return {CheckOutcome::NotAdmitted,
                ALA_FAIL(ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE, "the access list of %s does not admit the caller",
                         name),
                0};
    log->headerEnd = log->log.bytes.position();
    log->size = std::max(identity.size, log->headerEnd); // a server may have written the header meanwhile
    if (const CheckResult result = readHeaderWords(*log); result.outcome != CheckOutcome::Done)
        return result;
    opened = std::move(log);
    return {};
}

static const char *textOf(Fault fault) {
    switch (fault) {
    case Fault::None:
    case Fault::TooCostly: // does not occur where a record is expected
        break;
    case Fault::BadEnd:
        return "no record or end of file after the record";
    case Fault::PastEnd:
    case Fault::CutOff:
        return "the file ends inside a record";
    case Fault::ZeroCount:
        return "a record without attributes";
    case Fault::BadCounts:
        return "impossible attribute counts";
    case Fault::BadIdentifier:
        return "an attribute without an object identifier";
    case Fault::BadLength:
        return "invalid value length";
    case Fault::BadValue:
        return "value does not match its type";
    case Fault::MoreAttributes:
        return "more attributes than the record counts";
    }
    return "unknown";
}

namespace {

// One pass over a log.
class Check {
public:
    Check(ALA_handle_t handle, CheckedLog &log, CheckWatch &watch, LogSummary &summary)
        : handle_(handle), log_(log), watch_(watch), summary_(summary) {}

    CheckResult run() {
        LogBytes bytes(log_.log.fd, log_.size);
        Resync search(bytes, log_.log.verNum, log_.headerEnd, watch_);
        while (const FoundRecord *found = search.next()) {
            noteStray(found->begin, found->faultBefore, foundNext(*found));
            add(*found);
            recordsEnd_ = found->run.end;
        }
        if (bytes.failed())
            return {CheckOutcome::CannotRead,
                    ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "the log cannot be read completely"), bytes.error()};
        if (search.gaveUp())
            return {CheckOutcome::GaveUp, ALA_N_NORMAL, 0};
        const Fault fault = search.lastFault();
        summary_.isCut = strayRanges_ == 0 && recordsEnd_ < log_.size &&
                         (fault == Fault::PastEnd || fault == Fault::CutOff);
        noteStray(log_.size, fault, FoundNext::None);
        summary_.unsearched = search.unsearched();
        summary_.headerIsDamaged =
            summary_.records == 0 && recordsEnd_ < log_.size && isOfOtherVersion(bytes);
        return {};
    }

private:
    void noteStray(std::int64_t end, Fault fault, FoundNext next) {
        if (end <= recordsEnd_)
            return;
        if (strayRanges_++ == 0) {
            summary_.firstDamage = recordsEnd_;
            summary_.fault = textOf(fault);
        }
        summary_.strayBytes += end - recordsEnd_;
        watch_.stray(recordsEnd_, end, next);
    }

    void add(const FoundRecord &found) {
        ++summary_.records;
        watch_.record();
        summary_.values += found.run.values;
        if (kOfRecord * (found.run.end - found.begin) + kOfAttribute * found.run.longest > kMostMemory) {
            summary_.documents += documentsOf(found.head);
            noteSkipped(summary_, SkipReason::TooLong, found.run.values);
            return;
        }
        if (log_.log.bytes.position() != found.begin)
            log_.log.bytes.moveTo(found.begin);
        if (summarise(handle_, log_.log, summary_) != ALA_N_NORMAL)
            noteSkipped(summary_, SkipReason::Other, found.run.values);
    }

    static std::uint32_t documentsOf(const RecordHead &head) {
        if (head.docAttrPerDoc == 0)
            return 0;
        const std::uint32_t attributes = head.numAttr - head.numJobAttr;
        return attributes / head.docAttrPerDoc + (attributes % head.docAttrPerDoc != 0 ? 1 : 0);
    }

    // Would the first record be sound if the header gave a format version with the other form of record
    // heads?
    bool isOfOtherVersion(LogBytes &bytes) const {
        const bool counts = log_.log.verNum >= kVersionWithCounts;
        RecordParser other(bytes, counts ? kVersionWithDate : kVersionWithCounts);
        const std::int64_t tag = log_.headerEnd + other.headSize();
        RecordHead head = {};
        return other.readHead(tag, &head) == Fault::None &&
               other.follow(tag, bytes.cost(), head.numAttr).attributes == head.numAttr;
    }

    ALA_handle_t handle_;
    CheckedLog &log_;
    CheckWatch &watch_;
    LogSummary &summary_;
    std::int64_t recordsEnd_ = log_.headerEnd;
    std::uint64_t strayRanges_ = 0;
};

} // namespace

CheckResult qvledger::checkLog(ALA_handle_t handle, CheckedLog &log, CheckWatch &watch, LogSummary &summary) {
    const FuncTrace trace("checkLog");
    summary = {};
    summary.version = log.log.verNum;
    summary.created = log.created;
    summary.accessEntries = log.accessEntries;
    summary.bytes = log.size;
    summary.firstDamage = -1;
    try {
        return Check(handle, log, watch, summary).run();
    } catch (const std::bad_alloc &) {
        return {CheckOutcome::Failed, ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to check a log"), 0};
    }
}
