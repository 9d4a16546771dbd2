// A job record in memory: all its attributes, their values still packed.
#pragma once

#include <cstdint>

#include "ala/ala.h"
#include "ala/cursor/columns.h"
#include "ala/log/record_memory.h"
#include "service/oid.h"
#include "service/packed.h"
#include "service/values.h"

// One attribute.
struct attrValNode : attrTag {
    std::uint8_t *oid;            // binary object identifier: null until first used, then oidBytes
    GEN_string *attrVals;         // numAttrVal of them; null when there are none
    qvledger::ColumnStamp column; // what its name is remembered by
    std::uint8_t oidBytes[OID_BINARY_SIZE];
};
using ALA_attrValNode_t = attrValNode;

struct record {
    std::uint32_t numAttr;
    std::uint32_t numJobAttr;      // leading attributes that belong to the job; 0 for old logs
    std::uint32_t docAttrPerDoc;   // 0 for old logs
    attrValNode *attrValList;      // numAttr of them, in file order
    attrValNode *curAttr;          // node last delivered by the job cursor, null before the first
    std::uint32_t index;           // of that node
    std::uint32_t docIndex;        // documents handed out since the job cursor was started
    qvledger::RecordMemory memory; // of the attributes
};
using ALA_jobRecord_t = record;

// One document: deep copies of its attributes, independent of the record.
struct docRecord {
    std::uint32_t numDocAttr;
    std::uint32_t index;
    attrValNode *attrValList; // numDocAttr of them
    attrValNode *curAttr;
    qvledger::RecordMemory memory; // of the attributes
};
