// Logs of many shapes, and the damage that disks, copies and lost transfers do to them.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "samples/log_writer.h"

constexpr std::int64_t kNew = -1; // origin of a byte that the damage inserted

// A damaged log.  For each byte, origins contains the byte's position in the original log, or kNew.
struct Damaged {
    std::string bytes;
    std::vector<std::int64_t> origins;
};

struct Original {
    samples::Log log;
    std::uint32_t version;
    std::size_t headerEnd;
    std::size_t endOf(std::size_t record) const {
        return record + 1 < log.records().size() ? log.records()[record + 1] : log.size();
    }
};

using Random = std::mt19937;
inline std::size_t pick(Random &random, std::size_t below) {
    return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
}

// A log generated from a number (the same log each time): 1 to 410 records of one to five kinds with
// attributes of random types, damaged up to three times.  An overwritten byte keeps its origin.
struct ShapedLog {
    Original original;
    Damaged damaged;
    std::string kind;    // kind of the damage, such as "cut"; "several" for several damages
    std::string damages; // description of each damage
};
ShapedLog makeShapedLog(unsigned number);
