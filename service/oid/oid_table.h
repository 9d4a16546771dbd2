// A table file of the OID database in memory, with hash tables for look-ups.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "service/oid/oid_binary.h"

namespace qvledger {

struct OidEntry {
    std::uint32_t at;         // offset of OID and name in OidTable::bytes_
    std::uint32_t identifier; // short identifier; 0 if the entry has none
    std::uint8_t classNumber;
};

// One parsed line of a table.
struct OidLine {
    OidBinary binary;
    std::uint32_t identifier = 0;
    std::uint8_t classNumber = 0;
    std::string_view name;
};

class OidTable {
public:
    enum class Kind : std::uint8_t {
        Identifiers, // "oids": dotted-decimal, short identifier, class, name
        Names,       // "oids.LOCALE": dotted-decimal, name
    };
    enum class State : std::uint8_t { Loaded, Absent, Bad };

    // Reads a table file.  Returns Bad if the file is unreadable, malformed, larger than 1 GiB or not a
    // regular file; the log then has the file, the line if known, and the reason.  Returns Absent, and logs
    // nothing, if the file does not exist.  Throws std::bad_alloc.  REQUIRES: the table was not loaded
    // before.
    State load(const char *path, Kind kind);

    // The log text of a load() that returned Bad; otherwise empty.
    const std::string &whyBad() const { return trouble_; }

    // Find an entry by contents octets or by short identifier; null if the table has no such entry.
    const OidEntry *find(std::span<const std::uint8_t> contents) const;
    const OidEntry *findShort(std::uint32_t identifier) const;

    std::span<const std::uint8_t> contents(const OidEntry &entry) const { return part(entry.at); }
    std::span<const std::uint8_t> name(const OidEntry &entry) const {
        return part(entry.at + 1U + bytes_[entry.at]);
    }

private:
    using Slots = std::vector<std::uint32_t>; // index of an entry plus 1; 0 in a free slot

    bool readLines(int fd, const char *path, Kind kind);
    const char *add(const OidLine &line);
    void makeRoomForOne();
    std::size_t slotOf(std::span<const std::uint8_t> contents) const;
    std::size_t slotOf(std::uint32_t identifier) const;
    std::span<const std::uint8_t> part(std::size_t at) const {
        return std::span(bytes_).subspan(at + 1, bytes_[at]);
    }

    std::vector<std::uint8_t> bytes_; // each entry's OID and name, both after a length byte
    std::vector<OidEntry> entries_;
    Slots byContents_;
    Slots byIdentifier_;
    std::string trouble_;
};

} // namespace qvledger
