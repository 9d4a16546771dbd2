// What the cursors over attributes and the listing of names share.
#pragma once

#include "ala/base/handle.h"
#include "ala/base/record.h"
#include "service/status.h"

namespace qvledger {

// What the four cursors do differently.
struct CursorTexts {
    const char *operation;
    const char *invalidRecord;
};

// Fills the node's binary object identifier; null again on failure.
std::int32_t fillOid(STF_l__hdr *status, attrValNode *node);

// The checks at the head of a cursor or document operation; ALA_N_NORMAL when all pass.
template <class Record>
ALA_retCode_t checkRecord(ALA_handle_t handle, Record **curRecord, const CursorTexts &texts);

} // namespace qvledger
