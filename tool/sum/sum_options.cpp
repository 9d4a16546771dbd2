#include "tool/sum/sum_options.h"

#include <algorithm>
#include <string_view>

#include "tool/messages.h"
#include "tool/sum/amount.h"
#include "tool/sum/sums.h"

using namespace qvledger;

std::vector<std::string> qvledger::columnNames(const std::vector<KeyPart> &parts) {
    std::vector<std::string> names;
    names.reserve(parts.size() + kNumMeasures + 2);
    for (const KeyPart &part : parts)
        names.push_back(part.name);
    for (const Measure &measure : kMeasures)
        names.emplace_back(measure.name);
    names.emplace_back("first");
    names.emplace_back("last");
    return names;
}

static KeyPart partOf(std::string_view name) {
    using enum KeyPart::Kind;
    if (name == "owner")
        return {"owner", Attribute, {"job-owner"}};
    if (name == "printer")
        return {"printer", Attribute, {"printers-used", "printer-name-requested"}};
    if (name == "server" || name == "month" || name == "day")
        return {std::string(name), name == "server" ? Server : name == "month" ? Month : Day, {}};
    return {std::string(name), Attribute, {std::string(name)}};
}

// Parses names separated by commas.  False if a name is empty or occurs twice.
static bool readParts(std::string_view names, std::vector<KeyPart> *parts) {
    for (;;) {
        const std::string_view name = names.substr(0, names.find(','));
        const auto isSame = [&](const KeyPart &part) { return part.name == name; };
        if (name.empty() || std::ranges::any_of(*parts, isSame))
            return false;
        parts->push_back(partOf(name));
        if (name.size() == names.size())
            return true;
        names.remove_prefix(name.size() + 1);
    }
}

static bool readSortBy(const std::vector<KeyPart> &parts, std::string_view name, std::size_t *sortBy) {
    const std::vector<std::string> names = columnNames(parts);
    const auto found = std::ranges::find(names, name);
    *sortBy = static_cast<std::size_t>(found - names.begin());
    return found != names.end();
}

static bool readTop(std::string_view text, std::uint64_t *top) {
    std::int64_t number = 0;
    const bool isValid = parseAmount(text, 0, &number) && number > 0;
    *top = static_cast<std::uint64_t>(number);
    return isValid;
}

static bool readForm(std::string_view name, Form *form) {
    constexpr std::string_view kForms[] = {"table", "tsv", "json", "html"};
    const auto *const found = std::ranges::find(kForms, name);
    *form = static_cast<Form>(found - std::begin(kForms));
    return found != std::end(kForms);
}

bool qvledger::readSumOptions(const Options &options, SumOptions *sum) {
    const auto accept = [](const char *letter, const char *text, bool isValid) {
        if (!isValid)
            DisplayMsg(kMsgBadArgument, letter, text);
        return isValid;
    };
    const auto orElse = [](const char *text, const char *other) { return text != nullptr ? text : other; };
    const char *by = orElse(options.groupBy, "owner");
    const char *column = orElse(options.sortBy, "sheets");
    const char *form = orElse(options.form, "table");
    return accept("-b", by, readParts(by, &sum->parts)) &&
           accept("-k", column, readSortBy(sum->parts, column, &sum->sortBy)) &&
           accept("-f", form, readForm(form, &sum->form)) &&
           (options.top == nullptr || accept("-n", options.top, readTop(options.top, &sum->top)));
}
