#include "tool/sum/sheets.h"

#include <string_view>

using namespace qvledger;

// Adds a number of sheets.  False if the text is not a number, or the number is negative or too large.
static bool addSheets(std::string_view text, Amount *sheets) {
    std::int64_t number = 0;
    if (!parseAmount(text, 0, &number) || number < 0)
        return false;
    *sheets += number;
    return true;
}

// Adds the number after the last colon of each word, and skips words without such a number.  False if a
// number is too large.
static bool addConsumed(std::string_view text, Amount *sheets) {
    bool isValid = true;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(word.size() < text.size() ? word.size() + 1 : word.size());
        const std::size_t colon = word.rfind(':');
        const std::string_view digits = colon != word.npos ? word.substr(colon + 1) : "";
        if (!digits.empty() && digits.find_first_not_of("0123456789") == digits.npos)
            isValid = addSheets(digits, sheets) && isValid;
    }
    return isValid;
}

static bool hasValue(const attributeVal *value) {
    return value != nullptr && (*value->value != '\0' || value->next != nullptr);
}

const char *qvledger::countSheets(const attributeVal *completed, const attributeVal *consumed,
                                  Amount *sheets) {
    *sheets = 0;
    const char *fault = nullptr;
    if (hasValue(completed)) {
        for (const attributeVal *value = completed; value != nullptr; value = value->next)
            if (!addSheets(value->value, sheets))
                fault = kSheetsCompleted;
        return fault;
    }
    for (const attributeVal *value = consumed; value != nullptr; value = value->next)
        if (!addConsumed(value->value, sheets))
            fault = kMediaConsumed;
    return fault;
}
