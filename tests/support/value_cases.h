// Packed values of every type and their rendered texts.  Many values have absent, unknown or invalid parts.
//
// The texts assume an OID database with these short identifiers (class): 10 (00) "a4", 11 (40) "12-abc",
// 12 (10) "1-2-3", 13 (4F) "12-", 14 (40) "12abc", 15 (1F) "abc-def", 16 (20) "7-staple"; the time zone
// UTC; and the C locale.
#pragma once

#include <string>
#include <vector>

#include "samples/packer.h"

struct ValueCase {
    std::string label;
    std::uint32_t type;
    samples::Bytes packed;
    std::string text;      // rendered text; for type 42 all texts, separated by "|"
    std::int32_t code = 0; // result of ALA__GetAttribute
};

const std::vector<ValueCase> &valueCases();
