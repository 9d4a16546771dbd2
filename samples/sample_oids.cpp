#include "samples/sample_oids.h"

#include <map>
#include <sstream>
#include <stdexcept>

#include "sample_oids.inc"

namespace samples {

std::string_view oidTable() {
    return kOids;
}
std::string_view germanOidTable() {
    return kGermanOids;
}

using Table = std::map<std::string, OidEntry, std::less<>>;

static Table parseTable() {
    Table table;
    std::istringstream lines(kOids);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        OidEntry entry;
        std::string oid_class, name;
        fields >> entry.dotted >> entry.shortIdentifier >> oid_class >> name;
        table.emplace(name, entry);
    }
    return table;
}

const OidEntry &findOid(std::string_view name) {
    static const Table kTable = parseTable();
    const auto found = kTable.find(name);
    if (found == kTable.end())
        throw std::out_of_range("no object identifier is named " + std::string(name));
    return found->second;
}

} // namespace samples
