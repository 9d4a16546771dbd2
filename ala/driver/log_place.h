// Continues a log after the records that an earlier run has read.
#pragma once

#include <cstdint>

#include "ala/ala.h"

namespace qvledger {

// Returns the offset of the next record; after the header if no record was read yet.
std::int64_t nextRecordOffset(ALA_acctLogHandle_t log);

// Makes ALA_GetNextJobRecord return the record at the offset.
void continueAt(ALA_acctLogHandle_t log, std::int64_t offset);

// A checksum of bytes; start with kNoBytes.  It differs between byte orders.
constexpr std::uint64_t kNoBytes = 0xcbf29ce484222325;

// Adds the bytes from begin to end of a log's file.  False if the file is shorter, or cannot be read.
bool addToChecksum(ALA_acctLogHandle_t log, std::int64_t begin, std::int64_t end, std::uint64_t *checksum);

// Adds the bytes of a record's attributes, which are the last bytes of the record in the file.
void addToChecksum(ALA_record_t jobRecord, std::uint64_t *checksum);

// Returns the number of these bytes.
std::int64_t attributesSize(ALA_record_t jobRecord);

} // namespace qvledger
