// A table file of the OID database in memory, looked up through hash tables.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "service/oid/oid_binary.h"

namespace qvledger {

struct OidEntry {
    std::uint32_t at;         // where its OID and name lie
    std::uint32_t identifier; // short identifier, 0 for none
    std::uint8_t classNumber;
};

// What one line of a table says.
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

    // Reads a file.  Bad: the log says why, file and line included.  Absent, when there is no such file, is
    // not logged.  Throws std::bad_alloc.  Once only for each table.
    State load(const char *path, Kind kind);

    // What a load that went bad was told with.
    const std::string &whyBad() const { return trouble_; }

    // Null for one that the table has not.
    const OidEntry *find(std::span<const std::uint8_t> contents) const;
    const OidEntry *findShort(std::uint32_t identifier) const;

    std::span<const std::uint8_t> contents(const OidEntry &entry) const { return part(entry.at); }
    std::span<const std::uint8_t> name(const OidEntry &entry) const {
        return part(entry.at + 1U + bytes_[entry.at]);
    }

private:
    using Slots = std::vector<std::uint32_t>; // an entry's index and one, 0 for a free slot

    bool readLines(int fd, const char *path, Kind kind);
    const char *add(const OidLine &line);
    void makeRoomForOne();
    std::size_t slotOf(std::span<const std::uint8_t> contents) const;
    std::size_t slotOf(std::uint32_t identifier) const;
    std::span<const std::uint8_t> part(std::size_t at) const {
        return std::span(bytes_).subspan(at + 1, bytes_[at]);
    }

    std::vector<std::uint8_t> bytes_; // OID and name of each entry, each behind a length byte
    std::vector<OidEntry> entries_;
    Slots byContents_;
    Slots byIdentifier_;
    std::string trouble_;
};

} // namespace qvledger
