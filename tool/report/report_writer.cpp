#include "tool/report/report_writer.h"

#include <cstring>
#include <memory>
#include <utility>

#include "ala/driver/names.h"
#include "ala/driver/session.h"
#include "tool/messages.h"
#include "tool/progress.h"
#include "tool/stop.h"

using namespace qvledger;

std::int32_t qvledger::needDoc = 0;

static const char *const kInternalError = "qvledger internal error: ";
static const char *const kUnreadable = "unable to read record: ";

std::int32_t qvledger::equalList(const ALA_attrName *list1, const ALA_attrName *list2) {
    while (list1 != nullptr && list2 != nullptr && std::strcmp(list1->attrNameStr, list2->attrNameStr) == 0) {
        list1 = list1->next;
        list2 = list2->next;
    }
    return list1 == nullptr && list2 == nullptr ? 1 : 0;
}

namespace {

// The attribute names of the current record.
class Names {
public:
    Names() = default;
    ~Names() { ALA_FreeAttributeList(&list_); }
    Names(const Names &) = delete;
    Names &operator=(const Names &) = delete;

    // Loads the names of a record.  Most records have the same names as the previous record; namesState()
    // detects this without building the list.
    ALA_retCode_t take(ALA_handle_t handle, ALA_record_t record, bool *changed) {
        const ALA_recAttrType_t type = needDoc != 0 ? ALA_JOB_AND_DOCUMENT_ATTRIBUTES : ALA_JOB_ATTRIBUTES;
        *changed = false;
        if (const std::uint64_t present = namesState(handle, record, type); present != 0 && present == state_)
            return ALA_N_NORMAL;
        ALA_attrName *next = nullptr;
        const ALA_retCode_t result = ALA_ListAttributesFromRecord(handle, record, type, nullptr, &next);
        if (result != ALA_N_NORMAL)
            return result;
        *changed = equalList(list_, next) == 0;
        ALA_FreeAttributeList(&list_);
        list_ = next;
        state_ = namesState(handle, record, type);
        return result;
    }
    const ALA_attrName *get() const { return list_; }
    void moveTo(ALA_attrName **list) {
        ALA_FreeAttributeList(list);
        std::swap(*list, list_);
    }

private:
    ALA_attrName *list_ = nullptr;
    std::uint64_t state_ = 0;
};

struct RecordDeleter {
    void operator()(record *jobRecord) const { ALA_FreeJobRecord(&jobRecord); }
};
using OwnedRecord = std::unique_ptr<record, RecordDeleter>;

} // namespace

// Writes one field: the name, or the values separated by spaces.
static void writeField(LineWriter &fl, const ALA_attrPair &pair, std::int32_t isHeader) {
    if (isHeader != 0)
        return fl.put(pair.attrName);
    const attributeVal *value = pair.attrVal;
    fl.put(valueText(*value));
    for (value = value->next; value != nullptr && !fl.failed(); value = value->next) {
        fl.put(' ');
        fl.put(valueText(*value));
    }
}

// Frees a pair that a failed operation left.
static void dropPair(ALA_attrPair *pair) {
    if (pair != nullptr)
        ALA_FreeAttributePair(&pair);
}

// Writes all attributes of a document, with a tab before each.  Returns the code that ended the loop.
static ALA_retCode_t writeDocument(ALA_handle_t alaHandle, ALA_dRecord_t document, LineWriter &fl,
                                   std::int32_t isHeader) {
    ALA_attrPair *attr = nullptr;
    ALA_retCode_t result = ALA_GetFirstAttrFromDoc(alaHandle, &document, nullptr, &attr);
    while (result == ALA_N_NORMAL && !fl.failed()) {
        fl.put('\t');
        writeField(fl, *attr, isHeader);
        result = ALA_FreeAttributePair(&attr);
        if (result == ALA_N_NORMAL)
            result = ALA_GetNextAttrFromDoc(alaHandle, &document, nullptr, &attr);
    }
    dropPair(attr);
    return result;
}

std::int32_t qvledger::getDocmt(ALA_handle_t alaHandle, ALA_record_t *record, LineWriter &fl,
                                std::int32_t isHeader, std::int32_t numJobAttrs) {
    ALA_dRecord_t document = nullptr;
    ALA_retCode_t result = ALA_GetFirstDocmt(alaHandle, record, &document);
    if (result != ALA_N_NORMAL || document == nullptr)
        return result;
    result = writeDocument(alaHandle, document, fl, isHeader);
    ALA_FreeDocmtRecord(&document);
    if (isHeader != 0)
        return result; // a header shows the names of the first document only

    for (;;) {
        result = ALA_GetNextDocmt(alaHandle, record, &document);
        if (result != ALA_N_NORMAL || document == nullptr)
            return result;
        fl.endLine();
        for (std::int32_t i = 1; i < numJobAttrs; ++i)
            fl.put('\t');
        result = writeDocument(alaHandle, document, fl, isHeader);
        ALA_FreeDocmtRecord(&document);
        if (result != ALA_A_LAST_ATTRIBUTE)
            return result;
    }
}

static bool isNormalEndOfDocuments(ALA_retCode_t code) {
    return code == ALA_N_NORMAL || code == ALA_A_NO_MORE_DOCMT_ATTR || code == ALA_A_LAST_ATTRIBUTE;
}

bool qvledger::doLine(ALA_handle_t mainh, ALA_record_t *recordPtr, std::int32_t isHeader, LineWriter &fl) {
    ALA_attrPair *attr = nullptr;
    ALA_retCode_t result = ALA_GetFirstAttrFromJob(mainh, recordPtr, nullptr, &attr);
    if (result != ALA_N_NORMAL) {
        dropPair(attr);
        reportFailure(result, kUnreadable);
        return false;
    }
    std::int32_t numJobAttrs = 0;
    while (result == ALA_N_NORMAL && !fl.failed()) {
        if (numJobAttrs != 0)
            fl.put('\t');
        writeField(fl, *attr, isHeader);
        ++numJobAttrs;
        if (const ALA_retCode_t freed = ALA_FreeAttributePair(&attr); freed != ALA_N_NORMAL)
            logFailure(kInternalError, freed);
        result = ALA_GetNextAttrFromJob(mainh, recordPtr, nullptr, &attr);
    }
    dropPair(attr);
    if (fl.failed())
        return false; // already reported
    bool complete = true;
    if (result == ALA_A_NO_MORE_JOB_ATTR) {
        if (needDoc != 0)
            complete = isNormalEndOfDocuments(getDocmt(mainh, recordPtr, fl, isHeader, numJobAttrs));
    } else if (result != ALA_A_LAST_ATTRIBUTE) {
        reportFailure(result, kInternalError);
        complete = false;
    }
    fl.endLine();
    return complete;
}

bool qvledger::doLog(ALA_handle_t mainh, ALA_acctLogHandle_t *loghPtr, std::int32_t *doHeader, LineWriter &fl,
                     std::int32_t suppressHeaders, ALA_attrName **inoutp_list) {
    const std::uint64_t skippedBefore = valuesSkipped(mainh);
    ALA_record_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstJobRecord(mainh, loghPtr, &read);
    OwnedRecord current(read);
    Names names;
    bool changed = false;
    if (result == ALA_N_NORMAL)
        result = names.take(mainh, current.get(), &changed);
    if (result != ALA_N_NORMAL) {
        reportFailure(result, kInternalError);
        return hasNoRecord(*loghPtr);
    }

    bool header = false;
    if (suppressHeaders == 0) {
        const bool sameAsPrev = *inoutp_list != nullptr && equalList(*inoutp_list, names.get()) == 1;
        ALA_FreeAttributeList(inoutp_list);
        header = *doHeader != 0 && !sameAsPrev;
        if (header)
            *doHeader = 0;
    }
    bool complete = true;
    for (;;) {
        ALA_record_t writing = current.get();
        if (header)
            complete = doLine(mainh, &writing, 1, fl) && complete;
        complete = doLine(mainh, &writing, 0, fl) && complete;
        countRecord();
        writing = current.release();
        if (const ALA_retCode_t freed = ALA_FreeJobRecord(&writing); freed != ALA_N_NORMAL) {
            logFailure(kInternalError, freed);
            return false;
        }
        if (mustStop(fl.failed()))
            return false;

        result = ALA_GetNextJobRecord(mainh, loghPtr, &read);
        current.reset(read);
        if (result == ALA_A_LAST_ATTRIBUTE) {
            names.moveTo(inoutp_list);
            return complete && valuesSkipped(mainh) == skippedBefore;
        }
        if (result == ALA_N_NORMAL)
            result = names.take(mainh, current.get(), &changed);
        if (result != ALA_N_NORMAL) {
            reportFailure(result, kInternalError);
            return false;
        }
        header = suppressHeaders == 0 && changed;
    }
}

bool ReportWriter::write(ALA_handle_t handle, ALA_acctLogHandle_t log, const LogName &, LineWriter &report) {
    std::int32_t doHeader = suppressHeadflg_ != 0 ? 0 : 1;
    return doLog(handle, &log, &doHeader, report, suppressHeadflg_, &prevLog_);
}

void ReportWriter::freeNames() {
    if (prevLog_ != nullptr)
        ALA_FreeAttributeList(&prevLog_);
}
