// A program that calls each operation of the seam, and tells what it answers.
//
// It is built for both systems and tells the same on every machine of one: no names, numbers or times of the
// machine's own.  docs/platform.md holds both systems' answers beside each other.
#pragma once

#include <string>

namespace seam {

// A text by printf's rules.
std::string text(const char *format, ...) __attribute__((format(printf, 1, 2)));

// "ENOENT" and the like, of errno.
std::string errnoName();
// The reason of the thread's last failure, as a number.
std::string lastError();

// Tells what a call answers in a case.
void tell(const char *call, const std::string &answer);

// Each tells of its calls.  The working folder is the program's own, and empty.
void tellOfFiles();
void tellOfHolding();
void tellOfTexts();
void tellOfTimes();
void tellOfAccounts();
void tellOfRegistry();
void tellOfProcess();

} // namespace seam
