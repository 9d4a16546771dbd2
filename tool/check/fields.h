// A line of a table, with tabs between its fields.
#pragma once

#include <initializer_list>
#include <string_view>

namespace qvledger {

// To the standard output.  A control character in a field, whose text may come from a folder or the command
// line, becomes a question mark.
void writeFields(std::initializer_list<std::string_view> fields);

// Why the first line that could not be written was not, as errno; 0: all were.
int outputError();

} // namespace qvledger
