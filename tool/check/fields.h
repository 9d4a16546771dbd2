// A line of a table, with tabs between its fields.
#pragma once

#include <initializer_list>
#include <string_view>

namespace qvledger {

// Writes a line to the standard output, with control characters escaped in each field.
void writeFields(std::initializer_list<std::string_view> fields);

// Why the first line that could not be written was not, as errno; 0: all were.
int outputError();

} // namespace qvledger
