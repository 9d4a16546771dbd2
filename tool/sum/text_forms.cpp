// The sums as a table with aligned columns, and as lines of tab-separated fields.
#include <algorithm>

#include "tool/sum/sum_page.h"

using namespace qvledger;

static std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

// Lines with aligned columns and two spaces between columns.  Columns with an index of at least firstRight
// and less than endRight are right-aligned.
static std::string aligned(std::vector<Cells> lines, std::size_t firstRight, std::size_t endRight) {
    std::vector<std::size_t> widths(lines[0].size());
    for (Cells &line : lines)
        for (std::size_t i = 0; i < line.size(); ++i) {
            line[i] = line[i].empty() ? "-" : visible(line[i]);
            widths[i] = std::max(widths[i], widthOf(line[i]));
        }
    std::string text;
    for (const Cells &line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::string space(widths[i] - widthOf(line[i]), ' ');
            const bool isRight = i >= firstRight && i < endRight;
            text += i != 0 ? "  " : "";
            text += isRight ? space + line[i] : line[i] + space;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}

static std::vector<Cells> sumLines(const SumPage &page) {
    std::vector<Cells> lines = {columnNames(page.options.parts)};
    for (const SumRow &row : page.rows)
        lines.push_back(cellsOf(row));
    if (page.others)
        lines.push_back(cellsOf(page, "others", *page.others));
    return lines;
}

static std::vector<Cells> missingLines(const SumPage &page) {
    std::vector<Cells> lines = {kMissingColumns};
    for (const Missing &missing : page.missing)
        lines.push_back(cellsOf(missing));
    return lines;
}

std::string qvledger::tableForm(const SumPage &page) {
    const std::size_t parts = page.options.parts.size();
    std::vector<Cells> lines = sumLines(page);
    Cells total = cellsOf(page, "total", page.total);
    std::fill(total.begin() + 1, total.begin() + static_cast<std::ptrdiff_t>(parts), " ");
    if (page.others)
        std::fill(lines.back().begin() + 1, lines.back().begin() + static_cast<std::ptrdiff_t>(parts), " ");
    lines.push_back(std::move(total));
    std::string text = aligned(std::move(lines), parts, parts + kNumMeasures);
    if (page.missing.empty())
        return text + "\nmissing: nothing\n";
    return text + "\nmissing:\n" + aligned(missingLines(page), 0, 0);
}

static void appendFields(std::string &text, const std::vector<Cells> &lines) {
    for (const Cells &line : lines)
        for (std::size_t i = 0; i < line.size(); ++i) {
            text += visible(line[i]);
            text += i + 1 < line.size() ? '\t' : '\n';
        }
}

std::string qvledger::tsvForm(const SumPage &page) {
    std::string text;
    appendFields(text, sumLines(page));
    text += '\n';
    appendFields(text, missingLines(page));
    return text;
}
