// Opening a log to check it, and checking it.
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
#include "ala/repair/checked_log.h"
#include "ala/repair/tally.h"
#include "platform/byte_order.h"
#include "service/system.h"

using namespace qvledger;

// What rendering a record may take: the record with a document's copy of it, and the longest of its
// attributes with its texts, which are many times as long at worst (docs/architecture.md).
constexpr std::int64_t kMostMemory = 48 << 20;
constexpr std::int64_t kOfRecord = 4;
constexpr std::int64_t kOfAttribute = 36;

void ALA__CloseChecked(ALA__checkedLog *inp_log) {
    if (inp_log == nullptr)
        return;
    if (inp_log->log.fd != -1)
        static_cast<void>(_close(inp_log->log.fd)); // only read from: nothing can be lost
    delete inp_log;
}

namespace {

struct Closer {
    void operator()(ALA__checkedLog *log) const { ALA__CloseChecked(log); }
};
using OwnedLog = std::unique_ptr<ALA__checkedLog, Closer>;

} // namespace

static ALA_retCode_t openFile(ALA_handle_t handle, const char *name, std::int32_t *fd) {
    const Malloced<char> path = ALA__PathInDirectory(handle->acctLogPath, name);
    if (path == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory for the path of %s", name);
    Malloced<char> converted;
    if (!ALA__ConvertPath(path.get(), converted))
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "the path of %s cannot be converted", name);
    *fd = SYSU_Open(converted.get(), 0);
    return *fd != -1 ? ALA_N_NORMAL
                     : ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s cannot be opened: %s", path.get(),
                                std::strerror(errno));
}

// What the header says beside the access list's entries.  It was read before, and was sound.
static ALA_retCode_t readHeaderWords(ALA__checkedLog &log) {
    LogBytes bytes(log.log.fd, log.size);
    const bool hasDate = log.log.verNum >= kVersionWithDate;
    const std::size_t size = (hasDate ? 3 : 2) * sizeof(std::uint32_t);
    const std::uint8_t *at = bytes.at(0, size + sizeof(attrTag));
    if (at == nullptr) {
        errno = bytes.error();
        return ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "the header cannot be read again");
    }
    std::uint32_t created = 0;
    if (hasDate)
        std::memcpy(&created, at + sizeof created, sizeof created);
    log.created = fromNetworkOrder(created);
    attrTag tag;
    std::memcpy(&tag, at + size, sizeof tag);
    log.accessEntries = tag.numAttrVal;
    return ALA_N_NORMAL;
}

// Does a header that cannot be read lack nothing but its last bytes?  A length that leads far behind the end
// is damage.
static bool isCutHeader(int fd, std::int64_t size) {
    constexpr std::int64_t kWordSize = sizeof(std::uint32_t);
    constexpr std::uint32_t kLongestEntry = 64 << 10;
    LogBytes bytes(fd, size);
    const auto wordAt = [&bytes](std::int64_t position, std::uint32_t *word) {
        const std::uint8_t *at = bytes.at(position, kWordSize);
        if (at != nullptr)
            std::memcpy(word, at, kWordSize);
        return at != nullptr;
    };
    std::uint32_t version = 0, entries = 0, length = 0;
    if (!wordAt(0, &version))
        return !bytes.failed();
    const std::int64_t tag = kWordSize * (fromNetworkOrder(version) >= kVersionWithDate ? 3 : 2);
    if (size < tag + kTagSize || !wordAt(tag, &entries))
        return !bytes.failed();
    std::int64_t at = tag + kTagSize;
    for (std::uint32_t i = 0; i < entries; ++i) {
        if (!wordAt(at, &length))
            return !bytes.failed();
        at += kWordSize + length;
        if (at > size)
            return length <= kLongestEntry;
    }
    return false;
}

ALA_retCode_t ALA__OpenToCheck(ALA_handle_t in_alaHandle, const char *inp_name, ALA__checkedLog **outp_log) {
    const FuncTrace trace("ALA__OpenToCheck");
    *outp_log = nullptr;
    if (const ALA_retCode_t valid = ALA__CheckHandle(in_alaHandle, "ALA__OpenToCheck"); valid != ALA_N_NORMAL)
        return valid;
    in_alaHandle->plainDays.checkZone();
    OwnedLog log(new (std::nothrow) ALA__checkedLog);
    if (log == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to check %s", inp_name);
    log->log.fd = -1;
    log->log.pid = _getpid();
    if (const ALA_retCode_t result = openFile(in_alaHandle, inp_name, &log->log.fd); result != ALA_N_NORMAL)
        return result;
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(log->log.fd, &identity) != 0 || !identity.regular) {
        errno = 0;
        return ALA_FAIL(ALA_A_FAIL_TO_OPEN_LOG_FILE, "%s is no file on a disk", inp_name);
    }
    log->log.bytes = LogFile(log->log.fd);
    std::int32_t admitted = 0;
    if (const ALA_retCode_t result = lookUpPermission(log->log.bytes, &admitted, &log->log.verNum);
        result != ALA_N_NORMAL) {
        if (result != ALA_A_FAIL_READ_LOG_FILE || errno != 0 || !isCutHeader(log->log.fd, identity.size))
            return result;
        return ALA_FAIL(ALA_A_NO_MORE_JOB, "%s ends inside its header", inp_name);
    }
    if (admitted == 0)
        return ALA_FAIL(ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE, "the access list of %s does not admit the caller",
                        inp_name);
    log->headerEnd = log->log.bytes.position();
    log->size = std::max(identity.size, log->headerEnd); // which a server may just have written
    if (const ALA_retCode_t result = readHeaderWords(*log); result != ALA_N_NORMAL)
        return result;
    *outp_log = log.release();
    return ALA_N_NORMAL;
}

static const char *textOf(Fit fault) {
    switch (fault) {
    case Fit::Whole:
        return "a record without what should be behind it";
    case Fit::PastEnd:
        return "the file ends inside a record";
    case Fit::ZeroCount:
        return "a record without attributes";
    case Fit::BadCounts:
        return "counts of attributes that cannot be";
    case Fit::BadIdentifier:
        return "an attribute without an object identifier";
    case Fit::BadLength:
        return "a length of a value that cannot be";
    case Fit::BadValue:
        return "a value that is none of its type";
    case Fit::TooCostly:
        return "bytes that would take too long to search";
    case Fit::MoreBehind:
        return "more attributes than the record counts";
    }
    return "unknown";
}

namespace {

// One pass over a log.
class Check {
public:
    Check(ALA_handle_t givenHandle, ALA__checkedLog &log, ALA__checkWatch &givenWatch,
          ALA__logSummary &givenSummary)
        : handle(givenHandle), checked(log), watch(givenWatch), summary(givenSummary) {}

    ALA_retCode_t run() {
        LogBytes bytes(checked.log.fd, checked.size);
        WatchedSearch searchWatch(watch);
        RecordSearch search(bytes, checked.log.verNum, checked.headerEnd, searchWatch);
        while (const FoundRecord *found = search.next()) {
            noteStray(found->begin, found->faultBefore);
            add(*found);
            behind = found->end;
        }
        errno = bytes.error();
        if (bytes.failed())
            return ALA_FAIL(ALA_A_FAIL_READ_LOG_FILE, "the log cannot be read to its end");
        if (search.gaveUp())
            return ALA_A_LAST_ATTRIBUTE;
        summary.isCut = strayRanges == 0 && behind < checked.size && search.lastFault() == Fit::PastEnd;
        noteStray(checked.size, search.lastFault());
        summary.headerIsDamaged = summary.records == 0 && behind < checked.size && isOfOtherVersion(bytes);
        return ALA_N_NORMAL;
    }

private:
    void noteStray(std::int64_t end, Fit fault) {
        if (end <= behind)
            return;
        if (strayRanges++ == 0) {
            summary.firstDamage = behind;
            summary.fault = textOf(fault);
        }
        summary.strayBytes += end - behind;
        watch.stray(behind, end);
    }

    void add(const FoundRecord &found) {
        ++summary.records;
        watch.record();
        summary.values += found.values;
        if (kOfRecord * (found.end - found.begin) + kOfAttribute * found.longestAttribute > kMostMemory) {
            summary.documents += documentsOf(found.head);
            summary.passedOver[ALA__PASSED_TOO_LONG] += found.values;
            return;
        }
        if (checked.log.bytes.position() != found.begin)
            checked.log.bytes.moveTo(found.begin);
        if (tallyRecord(handle, checked.log, summary) != ALA_N_NORMAL)
            summary.passedOver[ALA__PASSED_OTHER] += found.values;
    }

    static std::uint32_t documentsOf(const RecordHead &head) {
        if (head.docAttrPerDoc == 0)
            return 0;
        const std::uint32_t attributes = head.numAttr - head.numJobAttr;
        return attributes / head.docAttrPerDoc + (attributes % head.docAttrPerDoc != 0 ? 1 : 0);
    }

    // Would the records be sound if the header gave the other form of them?
    bool isOfOtherVersion(LogBytes &bytes) const {
        const bool counts = checked.log.verNum >= kVersionWithCounts;
        RecordReader other(bytes, counts ? kVersionWithDate : kVersionWithCounts);
        FoundRecord found = {};
        return other.readRecord(checked.headerEnd, &found) == Fit::Whole;
    }

    ALA_handle_t handle;
    ALA__checkedLog &checked;
    ALA__checkWatch &watch;
    ALA__logSummary &summary;
    std::int64_t behind = checked.headerEnd; // the last record
    std::uint64_t strayRanges = 0;
};

} // namespace

ALA_retCode_t ALA__CheckLog(ALA_handle_t in_alaHandle, ALA__checkedLog *inoutp_log,
                            ALA__checkWatch &inout_watch, ALA__logSummary *outp_summary) {
    const FuncTrace trace("ALA__CheckLog");
    *outp_summary = {};
    outp_summary->version = inoutp_log->log.verNum;
    outp_summary->created = inoutp_log->created;
    outp_summary->accessEntries = inoutp_log->accessEntries;
    outp_summary->bytes = inoutp_log->size;
    outp_summary->firstDamage = -1;
    try {
        return Check(in_alaHandle, *inoutp_log, inout_watch, *outp_summary).run();
    } catch (const std::bad_alloc &) {
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "no memory to check a log");
    }
}
