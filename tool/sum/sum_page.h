// The sums of a run, sorted, and the forms in which they are written.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/sum/missing.h"
#include "tool/sum/sum_options.h"
#include "tool/sum/sums.h"

namespace qvledger {

struct SumRow {
    std::vector<std::string> keys; // valid UTF-8, one a part
    Sums sums;
};

struct SumPage {
    const SumOptions &options;
    std::vector<std::string> servers = {};
    std::int32_t first = 0, last = 0; // dates of the first and the last log; 0: there is none
    std::vector<SumRow> rows = {};    // sorted
    std::optional<Sums> others = {};  // what the rows lack after -n
    Sums total = {};
    std::vector<Missing> missing = {};
};

// Takes the groups, sorts them and keeps as many as the options ask for.
void addRows(SumPage &page, const Groups &groups);

// The page as a text of whole lines.
std::string pageText(const SumPage &page);

// The parts of pageText: each writes one form.
std::string tableForm(const SumPage &page);
std::string tsvForm(const SumPage &page);
std::string jsonForm(const SumPage &page);
std::string htmlForm(const SumPage &page);

// ---- For the forms ----

using Cells = std::vector<std::string>;

// A cell for each column.
Cells cellsOf(const SumRow &row);
// The sums without a key: its first cell has the name.
Cells cellsOf(const SumPage &page, const char *name, const Sums &sums);
extern const Cells kMissingColumns;
Cells cellsOf(const Missing &missing);

// The text with "\xNN" for each byte of a control character.
std::string visible(std::string_view text);

} // namespace qvledger
