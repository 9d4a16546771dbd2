// Setting up and ending a program: process, rights, locale, log and messages.
#pragma once

#include <initializer_list>

namespace qvledger {

// Sets up the process, calls work, cleans up, and returns the exit status.  If a signal asked the program to
// end, it ends by that signal instead.  If work throws std::bad_alloc, a message reports it and the status is
// kStatusNoMemory.  name: precedes messages.  localeCategories: the LC_... categories to set from the user's
// environment.
int runProgram(const char *name, int argc, char **argv, std::initializer_list<int> localeCategories,
               int (*work)(int argc, char **argv));

} // namespace qvledger
