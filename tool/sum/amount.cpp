#include "tool/sum/amount.h"

#include <algorithm>

using namespace qvledger;

// Appends a decimal digit to the number.  False if the result does not fit.
static bool appendDigit(std::int64_t *number, int digit, bool isNegative) {
    return !__builtin_mul_overflow(*number, 10, number) &&
           !__builtin_add_overflow(*number, isNegative ? -digit : digit, number);
}

bool qvledger::parseAmount(std::string_view text, int places, std::int64_t *amount) {
    const bool isNegative = text.starts_with('-');
    if (isNegative)
        text.remove_prefix(1);
    *amount = 0;
    int left = places;
    bool isFraction = false;
    bool hasDigit = false;
    for (const char c : text) {
        if (c == '.' && hasDigit && !isFraction && places > 0) {
            isFraction = true;
            hasDigit = false;
            continue;
        }
        if (c < '0' || c > '9' || (isFraction && left-- == 0) || !appendDigit(amount, c - '0', isNegative))
            return false;
        hasDigit = true;
    }
    for (; left > 0; --left)
        if (!appendDigit(amount, 0, isNegative))
            return false;
    return hasDigit;
}

std::string qvledger::amountText(Amount amount, int places) {
    const bool isNegative = amount < 0;
    std::string text; // characters in reverse order
    for (int digits = 0; amount != 0 || digits <= places; ++digits, amount /= 10) {
        if (digits == places && places != 0)
            text += '.';
        const auto digit = static_cast<int>(amount % 10);
        text += static_cast<char>('0' + (digit < 0 ? -digit : digit));
    }
    if (isNegative)
        text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}
