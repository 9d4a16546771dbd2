// The options that only qvledger-sum has.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/options.h"

namespace qvledger {

// One part of a group's key.
struct KeyPart {
    enum class Kind : std::uint8_t { Server, Month, Day, Attribute };

    std::string name; // name of the column
    Kind kind;
    std::vector<std::string> attributes; // the text is from the first attribute that has a value in the job
};

enum class Form : std::uint8_t { Table, Tsv, Json, Html };

struct SumOptions {
    std::vector<KeyPart> parts; // parts of the key, at least one
    std::size_t sortBy = 0;     // index in columnNames()
    std::uint64_t top = 0;      // number of groups to show; 0: all
    Form form = Form::Table;
};

// The names of all columns: first the parts of the key, then the measures, then the times of the
// first and the last job.
std::vector<std::string> columnNames(const std::vector<KeyPart> &parts);

// Parses the options.  If an argument is invalid, prints a message and returns false.
bool readSumOptions(const Options &options, SumOptions *sum);

} // namespace qvledger
