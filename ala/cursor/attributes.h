// Functions shared by the cursors over attributes, the cursor over documents and the list of names.
#pragma once

#include "ala/base/handle.h"
#include "ala/base/record.h"
#include "service/status.h"

namespace qvledger {

// The texts in log lines that differ between the operations.
struct CursorTexts {
    const char *operation;     // name of the operation
    const char *invalidRecord; // log text for an invalid record
};

// Converts the node's object identifier to binary, and sets node->oid; on failure node->oid is null.  Returns
// 0, or the error of OID_ConvertDecToBin.
std::int32_t fillOid(STF_l__hdr *status, attrValNode *node);

// Checks the handle and the record of an operation.  Returns ALA_N_NORMAL, ALA_A_NOT_REGISTER or
// ALA_A_INVALID_RECORD.
template <class Record>
ALA_retCode_t checkRecord(ALA_handle_t handle, Record **curRecord, const CursorTexts &texts);

} // namespace qvledger
