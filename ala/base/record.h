// A job record in memory: all attributes with their packed values.
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

// The tag that precedes the values of an attribute, with the layout that it has in the file.
struct attrTag {
    std::uint32_t numAttrVal;           // number of values after the tag, in the machine's byte order
    std::uint32_t attrID;               // in the machine's byte order; not interpreted
    char decoid[qvledger::kDecoidSize]; // dotted decimal, NUL-terminated
    char fill[3];
    std::uint32_t attrValType; // in the machine's byte order
};
using ALA_attrTag_t = attrTag;
static_assert(sizeof(ALA_attrTag_t) == 152, "the size of a tag in the file");
static_assert(offsetof(ALA_attrTag_t, attrValType) == 148);

// An attribute of a record or document.
struct attrValNode : attrTag {
    std::uint8_t *oid;    // points to oidBytes; null until the binary object identifier is needed
    GEN_string *attrVals; // numAttrVal values; null if numAttrVal is 0
    std::uint8_t oidBytes[OID_BINARY_SIZE];
};
using ALA_attrValNode_t = attrValNode;

struct record {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;    // number of job attributes, which come first; 0 before log version 3
    std::uint32_t docAttrPerDoc; // number of attributes of each complete document; 0 before log version 3
    attrValNode *attrValList;    // numAttr nodes, in file order
    attrValNode *curAttr;        // last node that the job cursor returned; null before the first node
    std::uint32_t index;         // position of the job cursor
    std::uint32_t docIndex;      // number of documents returned since the job cursor was started
    const std::uint8_t *bytes;   // bytes of the attributes, as in the file; part of the record's block
    std::size_t size;            // number of these bytes
    std::uint64_t names;         // Columns::stateOf for the record's names; 0: not known
};
using ALA_jobRecord_t = record;

// A document: contains copies of its attributes, so it does not need the record.
struct docRecord {
    std::uint32_t numDocAttr;
    std::uint32_t index;      // position of the document's cursor
    std::uint32_t firstPlace; // index, in the job record, of the first attribute of the first document
    attrValNode *attrValList; // numDocAttr nodes
    attrValNode *curAttr;     // last node that the document's cursor returned; null before the first node
};

namespace qvledger {

// Is this a valid length of a value in a log?  A value is not empty, and its length must fit GEN_string.
constexpr bool isValueLength(std::uint32_t length) {
    return length != 0 && length <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
}

// The parts of a block that makeRecord allocates, after the record or document.
struct RecordParts {
    attrValNode *nodes;
    GEN_string *values;  // values of all nodes
    std::uint8_t *bytes; // bytes of all values
};

// Allocates a record or document and its parts as one block, so that a single free releases all of them.  The
// record or document is zeroed, the parts are not.  Null when memory runs out.
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
