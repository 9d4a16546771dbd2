// The sums of a run, and their text in each form of output.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/missing.h"
#include "tool/sum/sum_options.h"
#include "tool/sum/sums.h"

namespace qvledger {

struct SumRow {
    std::vector<std::string> keys; // one text per part of the key, in valid UTF-8
    Sums sums;
};

struct SumPage {
    const SumOptions &options;
    std::vector<std::string> servers = {};
    std::int32_t first = 0, last = 0; // dates of the first and the last log, YYYYMMDD; 0: no log
    std::vector<SumRow> rows = {};    // sorted
    std::optional<Sums> others = {};  // sums of the groups that -n removed from the rows, if any
    Sums total = {};
    std::vector<Missing> missing = {};
};

// Makes a sorted row of each group, and adds up the total.  With -n, adds the rows beyond that number to the
// others and removes them.
void addRows(SumPage &page, const Groups &groups);

// The text of the page, in the form that the options name.  Consists of whole lines.
std::string pageText(const SumPage &page);

// The text of the page in one form.
std::string tableForm(const SumPage &page);
std::string tsvForm(const SumPage &page);
std::string jsonForm(const SumPage &page);
std::string htmlForm(const SumPage &page);

// ---- For the forms ----

using Cells = std::vector<std::string>;

// The cells of a row, one per column.
Cells cellsOf(const SumRow &row);
// The cells of sums without a key, one per column.  The first cell contains the name.
Cells cellsOf(const SumPage &page, const char *name, const Sums &sums);
// The columns of the section about missing data, and the cells of one of its lines.
extern const Cells kMissingColumns;
Cells cellsOf(const Missing &missing);

// The text with each byte of a control character replaced by "\xNN".
std::string visible(std::string_view text);

} // namespace qvledger
