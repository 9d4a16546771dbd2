// Reads heads and attributes of records in a log that may be damaged.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "ala/base/record.h"
#include "ala/salvage/log_bytes.h"
#include "service/status.h"

namespace qvledger {

struct ValueType;

// The fault found where a record or an attribute is expected.
enum class Fault : std::uint8_t {
    None,
    PastEnd, // the record or attribute extends past the end of the log
    CutOff,  // the log ends inside an attribute of a known type, whose values are sound up to the end
    ZeroCount,
    BadCounts,
    BadIdentifier,
    BadLength,
    BadValue,
    MoreAttributes, // the record has more attributes than its head gives
    TooCostly,      // reading on would exceed the cost limit
    BadEnd,         // the record is complete, but neither a record nor the log's end follows
};

// The words before a record's first attribute.
struct RecordHead {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;
    std::uint32_t docAttrPerDoc;

    // Do the document attributes fill whole documents?
    bool documentsFill() const {
        return numAttr == numJobAttr || (docAttrPerDoc != 0 && (numAttr - numJobAttr) % docAttrPerDoc == 0);
    }
};

// A run of adjacent sound attributes, and why it ends.
struct Run {
    std::int64_t begin;     // the first attribute's tag
    std::int64_t end;       // end of the last attribute
    std::int64_t last;      // the last attribute's tag
    std::uint32_t lastType; // type of the last attribute's values
    std::uint32_t attributes;
    std::uint64_t values;
    std::int64_t longest; // bytes of the longest attribute
    bool endIsCertain; // the last attribute has no value, or its last value was unpacked and so shows its end
    Fault fault;       // fault of the attribute after the run
    // Hashes of the attributes' identifiers; only the first kNotedIdentifiers are kept.
    std::vector<std::uint64_t> identifiers;
};

constexpr std::size_t kNotedIdentifiers = 256;
constexpr std::int64_t kTagSize = sizeof(attrTag);
constexpr std::int64_t kWord = sizeof(std::uint32_t);

class RecordParser {
public:
    RecordParser(LogBytes &bytes, std::uint32_t verNum);

    std::int64_t headSize() const { return headSize_; }

    // Reads the record head that ends where the record's first tag begins.
    Fault readHead(std::int64_t tag, RecordHead *head);

    // Reads the run of sound attributes that begins at a tag.  Stops with Fault::TooCostly when bytes.cost()
    // exceeds the limit.  However, reads the first `expected` attributes and the next attribute at any cost.
    // Throws std::bad_alloc.
    Run follow(std::int64_t tag, std::int64_t limit, std::uint32_t expected = 0);

    // Is the position the log's end, or does a head with the start of a tag follow?  If the log ends inside
    // such a head or tag, the part before the end is enough.
    bool isBoundary(std::int64_t position);

private:
    Fault addAttribute(Run &run, std::int64_t limit);
    Fault checkValue(std::int64_t position, std::uint32_t length, const ValueType *known);
    bool readIdentifier(const std::uint8_t *tag, std::uint64_t *number);

    LogBytes &bytes_;
    std::int64_t headSize_;
    StatusList status_;
    std::unordered_set<std::uint64_t> sound_; // hashes of sound identifiers
};

} // namespace qvledger
