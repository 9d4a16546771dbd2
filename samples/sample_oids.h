// The sample print system's object identifiers, by name.  The tables are embedded in the program, so that it
// needs no files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace samples {

std::string_view oidTable();       // the file "oids"
std::string_view germanOidTable(); // the file "oids.de"

struct OidEntry {
    std::string dotted;
    std::uint32_t shortIdentifier = 0;
};

// Throws std::out_of_range if the table does not have the name.
const OidEntry &findOid(std::string_view name);

inline const std::string &dotted(std::string_view name) {
    return findOid(name).dotted;
}
inline std::uint32_t shortOid(std::string_view name) {
    return findOid(name).shortIdentifier;
}

} // namespace samples
