// Reading the fields of a log file.
//
// Two kinds of 32-bit word occur: net words in network byte order, and native ones in the byte order of the
// machine.  A read that gives fewer bytes than asked for is a failed read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ala/log/read_ahead.h"

namespace qvledger {

constexpr std::size_t kDecoidSize = 137;

} // namespace qvledger

// What precedes the values of an attribute, as it stands in the file.
struct attrTag {
    std::uint32_t numAttrVal;           // native: number of value blocks behind the tag
    std::uint32_t attrID;               // native; nothing interprets it
    char decoid[qvledger::kDecoidSize]; // dotted decimal, NUL-terminated
    char fill[3];
    std::uint32_t attrValType; // native
};
using ALA_attrTag_t = attrTag;
static_assert(sizeof(ALA_attrTag_t) == 152, "the size of a tag in the file");
static_assert(offsetof(ALA_attrTag_t, attrValType) == 148);

namespace qvledger {

class LogInput {
public:
    explicit LogInput(int givenFd) : fd(givenFd), ahead(readAheadOf(givenFd)) {}

    bool read(void *bytes, std::size_t size) {
        if (ahead == nullptr || size == 0 || size > static_cast<std::size_t>(ahead->end - ahead->next))
            return readBehind(bytes, size);
        std::memcpy(bytes, ahead->next, size);
        ahead->next += size;
        taken += static_cast<std::int64_t>(size);
        return true;
    }
    bool readNetWord(std::uint32_t *word);
    bool readNativeWord(std::uint32_t *word) { return read(word, sizeof *word); }

    // Bytes taken from the file so far, those of a failed read included.
    std::int64_t consumed() const { return taken; }

    // Why a read failed: the system's errno; 0 when the bytes just ended.
    int error() const { return failure; }

    // Has a read found the file's end, and nothing before it?
    bool metEnd() const { return nothingLeft; }

private:
    // Of what was not read ahead.
    bool readBehind(void *bytes, std::size_t size);

    int fd;
    ReadAhead *ahead;
    std::int64_t taken = 0;
    bool nothingLeft = false;
    int failure = 0;
};

// How much memory a count or length of the file may ask for before the bytes behind it were seen.
constexpr std::size_t kTrustedBytes = 64 * 1024;

// How many of count elements to make room for next when room of them have been read; trusted of them
// take that many bytes.  The room grows fourfold as the bytes arrive, so that a damaged count or length never
// takes much more than the file; all that was outgrown, which stays until the record goes, is a third of the
// whole.
std::uint32_t growRoom(std::uint32_t count, std::uint32_t trusted, std::uint32_t room);
inline std::uint32_t nextRoom(std::uint32_t count, std::uint32_t trusted, std::uint32_t room) {
    return count <= trusted ? count : growRoom(count, trusted, room);
}

} // namespace qvledger
