// The cursor over the documents of a job record, which returns copies.
#include "ala/cursor/attributes.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "ala/base/owners.h"
#include "ala/base/trace.h"

using namespace qvledger;

// Copies a document of a record.  number: 0 for the first document.  If the record has too few attributes for
// the document, the copy contains only the existing attributes.
static ALA_retCode_t copyDocument(record *jobRecord, std::uint32_t number, const char *operation,
                                  ALA_dRecord_t *outDocument) {
    const std::uint64_t start = jobRecord->numJobAttr + std::uint64_t{number} * jobRecord->docAttrPerDoc;
    const std::uint64_t left = jobRecord->numAttr - start;
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(jobRecord->docAttrPerDoc, left));
    const attrValNode *source = jobRecord->attrValList + start;
    std::size_t values = 0;
    std::size_t size = 0;
    for (const attrValNode *node = source; node != source + count; ++node) {
        values += node->numAttrVal;
        for (std::uint32_t i = 0; i < node->numAttrVal; ++i)
            size += static_cast<std::size_t>(node->attrVals[i].length);
    }
    RecordParts parts = {};
    Malloced<docRecord> document = makeRecord<docRecord>(count, values, size, &parts);
    if (document == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                        "Could not allocate memory for docRecord in %s; ALA_A_OUT_OF_MEMORY", operation);
    document->numDocAttr = count;
    document->firstPlace = jobRecord->numJobAttr;
    std::copy_n(source, count, parts.nodes);
    for (attrValNode *node = parts.nodes; node != parts.nodes + count; ++node) {
        if (node->oid != nullptr)
            node->oid = node->oidBytes;
        if (node->numAttrVal == 0)
            continue;
        const GEN_string *from = std::exchange(node->attrVals, parts.values);
        for (const GEN_string *end = from + node->numAttrVal; from != end; ++from) {
            *parts.values++ = {from->length, parts.bytes};
            parts.bytes = std::copy_n(from->_value, from->length, parts.bytes);
        }
    }
    ++jobRecord->docIndex;
    *outDocument = document.release();
    return ALA_N_NORMAL;
}

namespace {

// Checks the arguments.  Sets *none to true if the record is valid but has no documents.
ALA_retCode_t checkDocuments(ALA_handle_t handle, ALA_record_t *curRecord, const CursorTexts &texts,
                             bool *none) {
    *none = false;
    if (const ALA_retCode_t valid = checkRecord(handle, curRecord, texts); valid != ALA_N_NORMAL)
        return valid;
    const record *job = *curRecord;
    if (job->numAttr == job->numJobAttr) {
        ALA_DETAIL(
            "There are no document attributes in this job record; numAttr = numJobAttr; in %s; ALA_N_NORMAL",
            texts.operation);
        *none = true;
    } else if (job->numAttr < job->numJobAttr) {
        return ALA_FAIL(ALA_A_UNKNOWN_ERR, "numAttr (%d) < numJobAttr (%d) in %s; ALA_A_UNKNOWN_ERR",
                        static_cast<std::int32_t>(job->numAttr), static_cast<std::int32_t>(job->numJobAttr),
                        texts.operation);
    }
    return ALA_N_NORMAL;
}

} // namespace

constexpr CursorTexts kFirstDocument = {"ALA_GetFirstDocmt",
                                        "record or record->attrValList is NULL or record->numAttr < 0 in "
                                        "ALA_GetFirstDocmt; ALA_A_INVALID_RECORD"};
constexpr CursorTexts kNextDocument = {
    "ALA_GetNextDocmt",
    "record or record->attrValList is NULL or record->numAttr < 0 in ALA_GetNextDocmt; ALA_A_INVALID_RECORD"};

ALA_retCode_t ALA_GetFirstDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                ALA_dRecord_t *outp_docRecord) {
    const FuncTrace trace(kFirstDocument.operation);
    *outp_docRecord = nullptr;
    bool none = false;
    const ALA_retCode_t result = checkDocuments(in_alaHandle, inoutp_curRecord, kFirstDocument, &none);
    if (result != ALA_N_NORMAL || none)
        return result;
    return copyDocument(*inoutp_curRecord, 0, kFirstDocument.operation, outp_docRecord);
}

ALA_retCode_t ALA_GetNextDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                               ALA_dRecord_t *outp_docRecord) {
    const FuncTrace trace(kNextDocument.operation);
    *outp_docRecord = nullptr;
    bool none = false;
    const ALA_retCode_t result = checkDocuments(in_alaHandle, inoutp_curRecord, kNextDocument, &none);
    if (result != ALA_N_NORMAL || none)
        return result;
    record *job = *inoutp_curRecord;
    const std::uint64_t start = std::uint64_t{job->docIndex} * job->docAttrPerDoc + job->numJobAttr;
    // A loop over documents without attributes would never reach the end of the record.
    if (job->docAttrPerDoc == 0 || job->numAttr <= start) {
        ALA_DETAIL("No more document attributes in ALA_GetNextDocmt; ALA_A_NO_MORE_DOCMT_ATTR");
        return ALA_A_NO_MORE_DOCMT_ATTR;
    }
    return copyDocument(job, job->docIndex, kNextDocument.operation, outp_docRecord);
}

ALA_retCode_t ALA_FreeDocmtRecord(ALA_dRecord_t *inoutp_docRecord) {
    const FuncTrace trace("ALA_FreeDocmtRecord");
    if (inoutp_docRecord == nullptr || *inoutp_docRecord == nullptr)
        return ALA_N_NORMAL;
    std::free(std::exchange(*inoutp_docRecord, nullptr));
    return ALA_N_NORMAL;
}
