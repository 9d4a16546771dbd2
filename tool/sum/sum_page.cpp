#include "tool/sum/sum_page.h"

#include <algorithm>

#include "platform/utf8.h"
#include "service/visible.h"

using namespace qvledger;

const Cells qvledger::kMissingColumns = {"server", "log", "from", "to", "reason"};

// Replaces each byte that is not part of a valid character by U+FFFD.
static std::string validUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        valid += length != 0 ? text.substr(0, length) : "\xEF\xBF\xBD";
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return valid;
}

std::string qvledger::visible(std::string_view text) {
    std::string shown;
    escapeControls(text, [&](std::string_view piece) { shown += piece; });
    return shown;
}

// Is row a sorted before row b, by this column?  Keys are in ascending order, numbers and times in descending
// order, rows without a time at the end.
static bool isBefore(const SumRow &a, const SumRow &b, std::size_t column) {
    if (column < a.keys.size())
        return a.keys[column] < b.keys[column];
    column -= a.keys.size();
    if (column < kNumMeasures)
        return a.sums.amounts[column] > b.sums.amounts[column];
    const Moment &ofA = column == kNumMeasures ? a.sums.first : a.sums.last;
    const Moment &ofB = column == kNumMeasures ? b.sums.first : b.sums.last;
    if (ofA.text.empty() || ofB.text.empty())
        return !ofA.text.empty() && ofB.text.empty();
    return ofA.seconds > ofB.seconds;
}

void qvledger::addRows(SumPage &page, const Groups &groups) {
    for (const auto &[key, sums] : groups) {
        SumRow row{keyTexts(key), sums};
        for (std::string &text : row.keys)
            text = validUtf8(text);
        page.rows.push_back(std::move(row));
        page.total.add(sums);
    }
    std::ranges::sort(page.rows, [](const SumRow &a, const SumRow &b) { return a.keys < b.keys; });
    std::ranges::stable_sort(
        page.rows, [&](const SumRow &a, const SumRow &b) { return isBefore(a, b, page.options.sortBy); });
    if (page.options.top == 0 || page.rows.size() <= page.options.top)
        return;
    const auto kept = page.rows.begin() + static_cast<std::ptrdiff_t>(page.options.top);
    page.others.emplace();
    std::for_each(kept, page.rows.end(), [&](const SumRow &row) { page.others->add(row.sums); });
    page.rows.erase(kept, page.rows.end());
}

static void addSums(Cells &cells, const Sums &sums) {
    for (std::size_t i = 0; i < kNumMeasures; ++i)
        cells.push_back(amountText(sums.amounts[i], kMeasures[i].places));
    cells.push_back(sums.first.text);
    cells.push_back(sums.last.text);
}

Cells qvledger::cellsOf(const SumRow &row) {
    Cells cells = row.keys;
    addSums(cells, row.sums);
    return cells;
}

Cells qvledger::cellsOf(const SumPage &page, const char *name, const Sums &sums) {
    Cells cells(page.options.parts.size());
    cells[0] = name;
    addSums(cells, sums);
    return cells;
}

Cells qvledger::cellsOf(const Missing &missing) {
    return {validUtf8(missing.server), validUtf8(missing.log), dateText(missing.first),
            dateText(missing.last), missing.reason};
}

std::string qvledger::pageText(const SumPage &page) {
    switch (page.options.form) {
    case Form::Tsv:
        return tsvForm(page);
    case Form::Json:
        return jsonForm(page);
    case Form::Html:
        return htmlForm(page);
    default:
        return tableForm(page);
    }
}
