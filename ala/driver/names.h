// For drivers that read a log: skipped values, cached names and lengths of texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "ala/ala.h"

namespace qvledger {

// The number of values and attributes that the cursors of a handle could not return so far.  If reading a log
// raised it, the report lacks a part of the log.  REQUIRES: a handle from ALA_Register.
std::uint64_t valuesSkipped(ALA_handle_t handle);

// A number that identifies the names that ALA_ListAttributesFromRecord would return with a null locale:
// records of a handle that have the same number have the same names.  0 if not all names are cached or the
// type is unknown.  Looks nothing up and logs nothing.  REQUIRES: a handle from ALA_Register and a record
// read with it.
std::uint64_t namesState(ALA_handle_t handle, ALA_record_t record, ALA_recAttrType_t type);

// A value's text with its stored length.  REQUIRES: a value of a pair from the facility.
std::string_view valueText(const attributeVal &value);

} // namespace qvledger
