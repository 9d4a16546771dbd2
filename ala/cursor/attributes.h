// Shared by the cursors over attributes and documents and the listing of names.
#pragma once

#include "ala/base/handle.h"
#include "ala/base/record.h"
#include "service/status.h"

namespace qvledger {

// The log texts in which the operations differ.
struct CursorTexts {
    const char *operation;
    const char *invalidRecord;
};

// Sets the node's binary object identifier, or null on failure.  0, or the error of the OID database.
std::int32_t fillOid(STF_l__hdr *status, attrValNode *node);

// Checks the handle and the record of an operation.  ALA_N_NORMAL, ALA_A_NOT_REGISTER or
// ALA_A_INVALID_RECORD.
template <class Record>
ALA_retCode_t checkRecord(ALA_handle_t handle, Record **curRecord, const CursorTexts &texts);

} // namespace qvledger
