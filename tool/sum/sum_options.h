// What the options of qvledger-sum ask for, besides those that all programs have.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/options.h"

namespace qvledger {

// One part of a group's key.
struct KeyPart {
    enum class Kind : std::uint8_t { Server, Month, Day, Attribute };

    std::string name; // of its column
    Kind kind;
    std::vector<std::string> attributes; // the first one that a job has a value of is used
};

enum class Form : std::uint8_t { Table, Tsv, Json, Html };

struct SumOptions {
    std::vector<KeyPart> parts; // of the key, at least one
    std::size_t sortBy = 0;     // a column of columnNames()
    std::uint64_t top = 0;      // 0: all
    Form form = Form::Table;
};

// The names of all columns: first the parts of the key, then the measures, then the times.
std::vector<std::string> columnNames(const std::vector<KeyPart> &parts);

// False after a message about an argument that cannot be used.
bool readSumOptions(const Options &options, SumOptions *sum);

} // namespace qvledger
