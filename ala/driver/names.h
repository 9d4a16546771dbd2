// What a driver need not ask for again while it walks a log, and what the cursors skipped.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// How many values, and attributes, the cursors of a handle could not deliver so far.  If the walk of a log
// raised this number, something in the log is in no report.  REQUIRES: a handle from ALA_Register.
std::uint64_t valuesPassedOver(ALA_handle_t handle);

// A number for the names that ALA_ListAttributesFromRecord would list with a null locale: two records of a
// handle have the same number only if they have the same list.  0: the names are not known without a list, or
// the type is unknown.  Nothing is looked up, nothing logged.  REQUIRES: a handle from ALA_Register and a
// record read with it.
std::uint64_t namesState(ALA_handle_t handle, ALA_record_t record, ALA_recAttrType_t type);

// A value's text with its length.  REQUIRES: a value of a pair from the facility.
std::string_view valueText(const attributeVal &value);

} // namespace qvledger
