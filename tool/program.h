// What every program does around its work: the process, the locale, the log and the messages.
#pragma once

#include <initializer_list>

namespace qvledger {

// Sets the process up, does the program's work and takes all down again; the program ends with the status
// that is returned, or by the signal that asked it to end.  name: before its messages.  localeCategories:
// what of the user's locale is taken up (LC_...).  Work that runs out of memory is reported, and the status
// is kStatusNoMemory then.
int runProgram(const char *name, int argc, char **argv, std::initializer_list<int> localeCategories,
               int (*work)(int argc, char **argv));

} // namespace qvledger
