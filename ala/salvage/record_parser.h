// Heads and attributes of records, in the bytes of a log that may be damaged.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "ala/base/record.h"
#include "ala/salvage/log_bytes.h"
#include "service/status.h"

namespace qvledger {

struct ValueType;

// What is wrong where a record or an attribute was expected.
enum class Fault : std::uint8_t {
    None,
    PastEnd, // the log ends before it does
    CutOff,  // likewise, and nothing else is wrong: its type is known, and what is there of its values is
             // sound
    ZeroCount,
    BadCounts,
    BadIdentifier,
    BadLength,
    BadValue,
    MoreAttributes, // follow the record than it counts
    TooCostly,      // to look at
    BadEnd,         // the record is whole, but neither another one nor the log's end follows it
};

// The words before a record's first attribute.
struct RecordHead {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;
    std::uint32_t docAttrPerDoc;

    // Are there as many attributes as whole documents need?
    bool documentsFill() const {
        return numAttr == numJobAttr || (docAttrPerDoc != 0 && (numAttr - numJobAttr) % docAttrPerDoc == 0);
    }
};

// Sound attributes, each of which begins where the one before it ends, and the reason why no more follow.
struct Run {
    std::int64_t begin;     // the first one's tag
    std::int64_t end;       // of the last one
    std::int64_t last;      // the last one's tag
    std::uint32_t lastType; // of its values
    std::uint32_t attributes;
    std::uint64_t values;
    std::int64_t longest; // attribute, in bytes
    bool endIsCertain;    // the last value is of a known type, so that its bytes show where it ends
    Fault fault;          // of the attribute after the last one
    std::vector<std::uint64_t> identifiers; // of the first kNotedIdentifiers attributes, a number each
};

constexpr std::size_t kNotedIdentifiers = 256;
constexpr std::int64_t kTagSize = sizeof(attrTag);
constexpr std::int64_t kWord = sizeof(std::uint32_t);

class RecordParser {
public:
    RecordParser(LogBytes &bytes, std::uint32_t verNum);

    std::int64_t headSize() const { return headSize_; }

    // The head of the record whose first tag that is.
    Fault readHead(std::int64_t tag, RecordHead *head);

    // The run of sound attributes from a tag on.  It ends with Fault::TooCostly once the cost of all that was
    // read exceeds the limit, but not before the attribute after as many as are expected.  Throws
    // std::bad_alloc.
    Run follow(std::int64_t tag, std::int64_t limit, std::uint32_t expected = 0);

    // Is that the log's end, or does it look like a record as far as its head and the beginning of its first
    // tag go?  What the end of the log leaves of the tag is enough, and any part of a head.
    bool isBoundary(std::int64_t position);

private:
    Fault addAttribute(Run &run, std::int64_t limit);
    Fault checkValue(std::int64_t position, std::uint32_t length, const ValueType *known);
    bool readIdentifier(const std::uint8_t *tag, std::uint64_t *number);

    LogBytes &bytes_;
    std::int64_t headSize_;
    StatusList status_;
    std::unordered_set<std::uint64_t> sound_; // identifiers, by their number
};

} // namespace qvledger
