// The sums as one HTML page, without scripts or external files.
#include <algorithm>

#include "tool/sum/sum_page.h"

using namespace qvledger;

static constexpr char kStyle[] = R"(
:root {
  color-scheme: light dark;
  --ink: #1b1f24; --paper: #ffffff; --line: #c9ced6; --bar: #3b6fb5; --warn: #a63a12;
}
@media (prefers-color-scheme: dark) {
  :root { --ink: #e4e7eb; --paper: #15181c; --line: #434a54; --bar: #7aa7e0; --warn: #ff9d76; }
}
@media print {
  :root {
    color-scheme: light;
    --ink: #000000; --paper: #ffffff; --line: #999999; --bar: #666666; --warn: #000000;
  }
  html { font-size: 62%; } /* all columns fit the width of the paper */
  tr { break-inside: avoid; }
}
body { margin: 2rem; color: var(--ink); background: var(--paper); font: 1rem/1.4 system-ui, sans-serif; }
@media print { body { margin: 0; } }
h1 { font-size: 1.5rem; }
h2 { font-size: 1.2rem; }
table { border-collapse: collapse; }
th, td { padding: 0.25rem 0.5rem; border-bottom: 1px solid var(--line); }
th, td { text-align: left; vertical-align: top; unicode-bidi: plaintext; }
td:not([class]) { min-width: 7rem; overflow-wrap: anywhere; }
thead th { border-bottom-width: 2px; }
tfoot { display: table-row-group; } /* not repeated on each printed page */
tfoot td { font-weight: bold; }
tbody + tfoot tr:first-child td { border-top: 2px solid var(--line); }
thead th, .number, .time { white-space: nowrap; }
td.time { font-size: 0.8em; font-weight: normal; line-height: 1.75; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
.warn { color: var(--warn); font-weight: bold; }
a { color: inherit; }
svg { display: block; width: 7rem; height: 1rem; }
rect { fill: var(--bar); }
)";

static std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : visible(text)) {
        switch (c) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        default:
            html += c;
        }
    }
    return html;
}

// The measure that the bars show: the column of -k if it is a measure, otherwise the sheets.
static std::size_t barMeasure(const SumOptions &options) {
    const std::size_t measure = options.sortBy - options.parts.size();
    return options.sortBy >= options.parts.size() && measure < kNumMeasures ? measure : kSheets;
}

// A table cell with a bar, whose width is the amount in thousandths of the greatest amount.
static std::string bar(Amount amount, Amount greatest) {
    const Amount width = greatest > 0 && amount > 0 ? std::min<Amount>(amount * 1000 / greatest, 1000) : 0;
    return "<td><svg viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" aria-hidden=\"true\"><rect "
           "width=\"" +
           amountText(width, 0) + "\" height=\"10\"/></svg></td>";
}

static std::string cell(std::string_view text) {
    return "<td>" + (text.empty() ? "-" : escaped(text)) + "</td>";
}

// Separates each three digits before the decimal point with a narrow space that does not break.
static std::string grouped(std::string number) {
    const std::size_t point = std::min(number.find('.'), number.size());
    const std::size_t first = number.starts_with('-') ? 1 : 0;
    for (std::size_t at = point; at > first + 3;)
        number.insert(at -= 3, "\u202F");
    return number;
}

// Appends the cells of the measures, and of the first and the last completion.
static void appendMeasures(std::string &html, const Cells &cells, std::size_t parts) {
    for (std::size_t i = parts; i < parts + kNumMeasures; ++i)
        html += "<td class=\"number\">" + grouped(cells[i]) + "</td>";
    for (std::size_t i = parts + kNumMeasures; i < cells.size(); ++i)
        html += "<td class=\"time\">" + (cells[i].empty() ? "-" : cells[i]) + "</td>";
}

static void appendLine(std::string &html, const SumPage &page, const Cells &cells, const std::string &last) {
    const std::size_t parts = page.options.parts.size();
    html += "<tr>";
    for (std::size_t i = 0; i < parts; ++i)
        html += cell(cells[i]);
    appendMeasures(html, cells, parts);
    html += last + "</tr>\n";
}

static void appendNamed(std::string &html, const SumPage &page, const char *name, const Sums &sums) {
    const std::size_t parts = page.options.parts.size();
    const Cells cells = cellsOf(page, name, sums);
    html += "<tr><td colspan=\"" + std::to_string(parts) + "\">" + name + "</td>";
    appendMeasures(html, cells, parts);
    html += "<td></td></tr>\n";
}

static void appendSums(std::string &html, const SumPage &page) {
    const std::size_t measure = barMeasure(page.options);
    const std::size_t parts = page.options.parts.size();
    const Cells names = columnNames(page.options.parts);
    html += "<table>\n<thead><tr>";
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isNumber = i >= parts && i < parts + kNumMeasures;
        html += (isNumber ? "<th class=\"number\">" : "<th>") + escaped(names[i]) + "</th>";
    }
    html += std::string("<th>") + kMeasures[measure].name + "</th></tr></thead>\n<tbody>\n";
    Amount greatest = 0;
    for (const SumRow &row : page.rows)
        greatest = std::max(greatest, row.sums.amounts[measure]);
    for (const SumRow &row : page.rows)
        appendLine(html, page, cellsOf(row), bar(row.sums.amounts[measure], greatest));
    html += "</tbody>\n<tfoot>\n";
    if (page.others)
        appendNamed(html, page, "others", *page.others);
    appendNamed(html, page, "total", page.total);
    html += "</tfoot>\n</table>\n";
}

static void appendMissing(std::string &html, const SumPage &page) {
    html += page.missing.empty() ? "<h2>Missing</h2>\n" : "<h2 id=\"missing\" class=\"warn\">Missing</h2>\n";
    if (page.missing.empty()) {
        html += "<p>Nothing is missing.</p>\n";
        return;
    }
    html += "<table>\n<thead><tr>";
    for (const std::string &name : kMissingColumns)
        html += "<th>" + name + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (const Missing &missing : page.missing) {
        html += "<tr>";
        for (const std::string &text : cellsOf(missing))
            html += cell(text);
        html += "</tr>\n";
    }
    html += "</tbody>\n</table>\n";
}

// The servers and the dates, such as "alpha, beta, 2026-11-01 to 2026-11-30".
static std::string subject(const SumPage &page) {
    std::string text;
    for (const std::string &server : page.servers)
        text += (text.empty() ? "" : ", ") + server;
    if (page.first != 0)
        text += ", " + dateText(page.first) + " to " + dateText(page.last);
    return escaped(text);
}

std::string qvledger::htmlForm(const SumPage &page) {
    std::string title = "Print jobs by ";
    for (const KeyPart &part : page.options.parts)
        title += (&part != page.options.parts.data() ? ", " : "") + escaped(part.name);
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                       "style-src 'unsafe-inline'\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
                       title + ": " + subject(page) + "</title>\n<style>" + kStyle +
                       "</style>\n</head>\n<body>\n<h1>" + title + "</h1>\n<p>" + subject(page) + "</p>\n";
    if (!page.missing.empty())
        html += "<p class=\"warn\">These sums may be incomplete: <a href=\"#missing\">see what is "
                "missing</a>.</p>\n";
    appendSums(html, page);
    appendMissing(html, page);
    return html + "</body>\n</html>\n";
}
