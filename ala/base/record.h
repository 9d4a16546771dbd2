// A job record in memory: all its attributes, their values still packed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "ala/ala.h"
#include "platform/malloced.h"
#include "service/oid/oid.h"
#include "service/packed/packed.h"
#include "service/packed/values.h"

namespace qvledger {

constexpr std::size_t kDecoidSize = 137;

} // namespace qvledger

// What precedes the values of an attribute, as it stands in the file.
struct attrTag {
    std::uint32_t numAttrVal;           // in the machine's byte order: number of values after the tag
    std::uint32_t attrID;               // the same; nothing interprets it
    char decoid[qvledger::kDecoidSize]; // dotted decimal, NUL-terminated
    char fill[3];
    std::uint32_t attrValType; // in the machine's byte order
};
using ALA_attrTag_t = attrTag;
static_assert(sizeof(ALA_attrTag_t) == 152, "the size of a tag in the file");
static_assert(offsetof(ALA_attrTag_t, attrValType) == 148);

// One attribute.
struct attrValNode : attrTag {
    std::uint8_t *oid;    // binary object identifier: null until first used, then oidBytes
    GEN_string *attrVals; // numAttrVal of them; null if that is 0
    std::uint8_t oidBytes[OID_BINARY_SIZE];
};
using ALA_attrValNode_t = attrValNode;

struct record {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;    // leading attributes that belong to the job; 0 for old logs
    std::uint32_t docAttrPerDoc; // 0 for old logs
    attrValNode *attrValList;    // numAttr of them, in file order
    attrValNode *curAttr;        // node last delivered by the job cursor, null before the first
    std::uint32_t index;         // of that node
    std::uint32_t docIndex;      // documents handed out since the job cursor was started
    std::uint64_t names;         // state of the columns in which its names were found; 0: not known
};
using ALA_jobRecord_t = record;

// One document: deep copies of its attributes, independent of the record.
struct docRecord {
    std::uint32_t numDocAttr;
    std::uint32_t index;
    std::uint32_t firstPlace; // in the job record, of the first document's first attribute
    attrValNode *attrValList; // numDocAttr of them
    attrValNode *curAttr;
};

namespace qvledger {

// Can a value of a log have that length?  None is empty, and GEN_string can express no longer one.
constexpr bool isValueLength(std::uint32_t length) {
    return length != 0 && length <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
}

// What follows a record or document in its block.
struct RecordParts {
    attrValNode *nodes;
    GEN_string *values;  // of all nodes
    std::uint8_t *bytes; // in which the values lie
};

// A zeroed record or document and its parts, which are not cleared, in one block, so that free releases all
// of it.  Null when memory runs out.
template <class Record>
Malloced<Record> makeRecord(std::size_t nodes, std::size_t values, std::size_t bytes, RecordParts *parts) {
    static_assert(sizeof(Record) % alignof(attrValNode) == 0);
    static_assert(sizeof(attrValNode) % alignof(GEN_string) == 0);
    void *block =
        std::malloc(sizeof(Record) + nodes * sizeof(attrValNode) + values * sizeof(GEN_string) + bytes);
    if (block == nullptr)
        return nullptr;
    Malloced<Record> made(new (block) Record{});
    parts->nodes = made->attrValList = reinterpret_cast<attrValNode *>(made.get() + 1);
    parts->values = reinterpret_cast<GEN_string *>(parts->nodes + nodes);
    parts->bytes = reinterpret_cast<std::uint8_t *>(parts->values + values);
    return made;
}

} // namespace qvledger
