// The sums as one JSON object, with one line per group.
#include <cstdio>

#include "tool/sum/sum_page.h"

using namespace qvledger;

// REQUIRES: the text is valid UTF-8.
static std::string quoted(std::string_view text) {
    std::string json = "\"";
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            json += escape;
            continue;
        }
        if (c == '"' || c == '\\')
            json += '\\';
        json += c;
    }
    return json + '"';
}

static std::string quotedOrNull(std::string_view text) {
    return text.empty() ? "null" : quoted(text);
}

static void appendSums(std::string &json, const Sums &sums) {
    for (std::size_t i = 0; i < kNumMeasures; ++i)
        json += quoted(kMeasures[i].name) + ":" + amountText(sums.amounts[i], kMeasures[i].places) + ",";
    json += "\"first\":" + quotedOrNull(sums.first.text) + ",\"last\":" + quotedOrNull(sums.last.text) + "}";
}

static void appendRow(std::string &json, const SumPage &page, const SumRow &row) {
    json += "{\"by\":{";
    for (std::size_t i = 0; i < row.keys.size(); ++i)
        json += (i != 0 ? "," : "") + quoted(page.options.parts[i].name) + ":" + quoted(row.keys[i]);
    json += "},";
    appendSums(json, row.sums);
}

static std::string missingObject(const Missing &missing) {
    const Cells cells = cellsOf(missing);
    std::string json = "{";
    for (std::size_t i = 0; i < cells.size(); ++i)
        json += (i != 0 ? "," : "") + quoted(kMissingColumns[i]) + ":" + quotedOrNull(cells[i]);
    return json + "}";
}

std::string qvledger::jsonForm(const SumPage &page) {
    std::string json = "{\"servers\":[";
    for (const std::string &server : page.servers)
        json += (server != page.servers.front() ? "," : "") + quoted(server);
    json += "],\"from\":" + quotedOrNull(dateText(page.first)) +
            ",\"to\":" + quotedOrNull(dateText(page.last)) + ",\n\"groups\":[";
    const char *separator = "\n";
    for (const SumRow &row : page.rows) {
        json += separator;
        appendRow(json, page, row);
        separator = ",\n";
    }
    json += "],\n\"others\":";
    if (page.others) {
        json += '{';
        appendSums(json, *page.others);
    } else {
        json += "null";
    }
    json += ",\n\"total\":{";
    appendSums(json, page.total);
    json += ",\n\"missing\":[";
    separator = "\n";
    for (const Missing &missing : page.missing) {
        json += separator + missingObject(missing);
        separator = ",\n";
    }
    return json + "]}\n";
}
