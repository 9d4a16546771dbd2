// A line of a table, with tabs between its fields.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace qvledger {

// The text with question marks for the control characters that a folder's name, the registry or the command
// line may have brought, which could command a terminal.
std::string printable(std::string_view text);

// To the standard output, each field printable.
void writeFields(std::initializer_list<std::string_view> fields);

// Why the first line that could not be written was not, as errno; 0: all were.
int outputError();

} // namespace qvledger
