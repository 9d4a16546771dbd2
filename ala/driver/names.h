// Functions for drivers that read a log: number of skipped values, comparison of names, lengths of texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// Returns the number of values and attributes that the cursors of a handle could not return completely so
// far.  If the number grows while a log is read, the report of that log is incomplete.  REQUIRES: a handle
// from ALA_Register.
std::uint64_t valuesSkipped(ALA_handle_t handle);

// Returns a number that identifies the names that ALA_ListAttributesFromRecord would return with a null
// locale.  Two records of a handle with the same number have the same names.  0 if not all names are cached
// or the type is unknown.  Does not use the OID database and logs nothing.  REQUIRES: a handle from
// ALA_Register, and a record read with that handle.
std::uint64_t namesState(ALA_handle_t handle, ALA_record_t record, ALA_recAttrType_t type);

// Returns a value's text.  The length is stored with the value.  REQUIRES: a value of a pair that
// the facility returned.
std::string_view valueText(const attributeVal &value);

} // namespace qvledger
