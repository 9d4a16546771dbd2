// The placeholders of a message: "%1$s", "%2$d".
#pragma once

#include <string>

namespace qvledger {

// Are the placeholders of the text, in any order and number, among those of the default one, each of the same
// kind?  Only then may it be given the default one's arguments: any other conversion would read what is not
// there.  It may leave arguments out, but none between two that it uses.
bool placeholdersFit(const char *text, const char *defaultText);

// The arguments before the first one that a fitting text uses, as their kinds: 's' or 'd' for each.  printf's
// rules know no such text, so it is renumbered to be given the arguments behind them.
std::string passOverUnused(char *text, const char *defaultText);

} // namespace qvledger
