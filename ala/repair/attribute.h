// Whether bytes of a log are a well-formed attribute or record.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ala/base/record.h"
#include "ala/repair/log_bytes.h"
#include "service/status.h"

namespace qvledger {

enum class Fit : std::uint8_t {
    Whole,
    PastEnd,   // what is there is sound, but the log ends before it does
    ZeroCount, // the faults, by what is wrong
    BadCounts,
    BadIdentifier,
    BadLength,
    BadValue,
    MoreBehind, // a further attribute follows the last one
    TooCostly,  // the log has used up what may be looked at in vain
};

// Of a record: the words in front of its first attribute.
struct RecordHead {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;
    std::uint32_t docAttrPerDoc;
};

struct FoundAttribute {
    std::int64_t end;
    std::uint32_t numAttrVal;
    std::uint64_t identifier; // a number that stands for the object identifier
    bool endIsCertain;        // false: its last value is taken as it is, whatever it holds
};

struct FoundRecord {
    std::int64_t begin;
    std::int64_t end;
    std::int64_t lastAttribute; // where it begins
    RecordHead head;
    std::uint64_t values;
    std::int64_t longestAttribute; // bytes
    bool endIsCertain;
    Fit faultBefore;       // of a record found out of step: what was wrong where one was expected
    std::uint64_t further; // if Fit::MoreBehind: the identifier of the attribute behind it
    bool isBeforeRest;     // that attribute is what is left of the next record
    std::vector<std::uint64_t> identifiers; // of the first attributes, at most kNotedIdentifiers
};

constexpr std::size_t kNotedIdentifiers = 256;
constexpr std::int64_t kTagSize = sizeof(attrTag);

// Values beyond this are not unpacked, so that none takes more memory than there should be: their length has
// to do.
constexpr std::uint32_t kLongestUnpacked = 1 << 20;

class RecordReader {
public:
    RecordReader(LogBytes &givenBytes, std::uint32_t verNum);

    std::int64_t headSize() const { return wordsOfHead * std::int64_t{sizeof(std::uint32_t)}; }

    // The words in front of a record's first attribute.
    Fit readHead(std::int64_t begin, RecordHead *head);

    // An attribute as far as tag and lengths tell; its values are not unpacked.
    Fit measureAttribute(std::int64_t begin, FoundAttribute *attribute) {
        return walkAttribute(begin, false, attribute);
    }
    // The same with its values.
    Fit readAttribute(std::int64_t begin, FoundAttribute *attribute) {
        return walkAttribute(begin, true, attribute);
    }

    // Is a record there as far as its head, tags and lengths tell?
    bool measuresAsRecord(std::int64_t begin);

    // A whole record, behind which no further attribute begins.  If it fails, its end is where it failed.
    Fit readRecord(std::int64_t begin, FoundRecord *record);

    // Is what begins there a record as far as its head and the beginning of its first tag tell?  At the log's
    // end what there is of them has to do; with nothing there it is none.
    bool looksLikeRecord(std::int64_t begin);

private:
    static constexpr std::size_t kKnown = 64;
    struct Identifier {
        std::size_t size = 0; // with its NUL
        char decoid[kDecoidSize] = "";
        std::uint64_t number = 0;
    };

    Fit readIdentifier(const std::uint8_t *tag, std::uint64_t *number);
    Fit walkAttribute(std::int64_t begin, bool withValues, FoundAttribute *attribute);
    Fit checkValue(std::int64_t position, std::uint32_t length, std::uint32_t type);

    LogBytes &bytes;
    std::int64_t wordsOfHead;
    StatusList status;
    std::array<Identifier, kKnown> known; // which were sound: the same come again and again
};

} // namespace qvledger
