#include "ala/cursor/columns.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

using namespace qvledger;

constexpr std::size_t kPlaces = 256; // remembered

// No two states of any columns are the same.
static std::atomic<std::uint64_t> states;

std::string_view Columns::recall(const char *decoid, ColumnStamp &stamp) const {
    if (table == nullptr || stamp.place >= kPlaces)
        return {};
    const Column &column = table.get()[stamp.place];
    if (stamp.state != state) {
        if (column.decoidSize == 0 || std::memcmp(column.decoid, decoid, column.decoidSize) != 0)
            return {};
        stamp.state = state;
    }
    return {column.name, column.nameSize};
}

void Columns::remember(const char *decoid, const ColumnStamp &stamp, const char *name) {
    if (stamp.place >= kPlaces)
        return;
    if (table == nullptr)
        table.reset(static_cast<Column *>(std::calloc(kPlaces, sizeof(Column))));
    if (table == nullptr)
        return;
    state = ++states;
    Column &column = table.get()[stamp.place];
    std::memcpy(column.decoid, decoid, sizeof column.decoid);
    column.decoidSize = static_cast<std::uint8_t>(std::strlen(decoid) + 1);
    column.nameSize = static_cast<std::uint16_t>(std::strlen(name));
    std::memcpy(column.name, name, column.nameSize + std::size_t{1});
}
