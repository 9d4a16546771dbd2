// Counts the sheets of a job, by the rule in qvledger-sum(1).
#pragma once

#include "ala/ala.h"
#include "tool/sum/amount.h"

namespace qvledger {

constexpr char kSheetsCompleted[] = "media-sheets-completed";
constexpr char kMediaConsumed[] = "media-consumed";

// Sets *sheets to the number of sheets of a job.  completed, consumed: the values of media-sheets-completed
// and media-consumed; null if the job lacks the attribute.
//
// An office job has a number in media-sheets-completed.  An order has texts in media-consumed instead, such
// as "printed:na-letter-white:96:48 cover-page:coloured card:1:1": if a word ends with a colon and digits,
// the digits are a number of sheets.  If media-sheets-completed has a value, media-consumed is ignored.
// Returns null, or the name of the attribute if one of its values cannot be counted; the other values are
// counted.
const char *countSheets(const attributeVal *completed, const attributeVal *consumed, Amount *sheets);

} // namespace qvledger
