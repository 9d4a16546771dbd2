// Sets up and ends a program: process, rights, locale, log and messages.
#pragma once

#include <initializer_list>

namespace qvledger {

// Sets up the process, calls work, cleans up, and returns the exit status of work.  If a signal asked the
// program to end, the program ends by that signal instead of returning.  If work throws std::bad_alloc,
// prints a message and returns kStatusNoMemory.  name: the program's name in messages.  localeCategories: the
// LC_... categories to set from the user's environment.
int runProgram(const char *name, int argc, char **argv, std::initializer_list<int> localeCategories,
               int (*work)(int argc, char **argv));

// Prints a message if the system cannot use UTF-8, and calls checkZone().  A program calls this function
// before it changes its environment.
void checkSystem();

// Prints a message if the system cannot use the time zone in TZ, and removes TZ from the environment, so that
// the system's time zone applies.
void checkZone();

} // namespace qvledger
