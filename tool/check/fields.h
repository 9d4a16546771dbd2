// Output of tables, as lines of tab-separated fields.
#pragma once

#include <initializer_list>
#include <string_view>

namespace qvledger {

// Writes a line to standard output, with control characters escaped in each field, and flushes it.
void writeFields(std::initializer_list<std::string_view> fields);

// The errno of the first write that failed; 0 if no write failed.
int outputError();

} // namespace qvledger
