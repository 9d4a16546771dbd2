// The rule by which the sheets of a job are counted; qvledger-sum(1) documents it.
#pragma once

#include "ala/ala.h"
#include "tool/sum/amount.h"

namespace qvledger {

constexpr char kSheetsCompleted[] = "media-sheets-completed";
constexpr char kMediaConsumed[] = "media-consumed";

// The sheets of a job by the values of its two attributes; null for one that the job does not have.
//
// An office job has a number in media-sheets-completed.  An order has texts in media-consumed instead, such
// as "printed:na-letter-white:96:48 cover-page:coloured card:1:1": each word that ends with a colon and
// digits has the sheets in these digits.  A job that has both counts by media-sheets-completed.
// Null, or the name of an attribute that has a value that is not a number; the others are counted.
const char *countSheets(const attributeVal *completed, const attributeVal *consumed, Amount *sheets);

} // namespace qvledger
