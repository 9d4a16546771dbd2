#include "ala/base/columns.h"

#include <cstdlib>

using namespace qvledger;

void Columns::remember(std::uint32_t place, const char *decoid, const char *name) {
    if (place >= kPlaces)
        return;
    if (table_ == nullptr)
        table_.reset(static_cast<Column *>(std::calloc(kPlaces, sizeof(Column))));
    if (table_ == nullptr)
        return;
    ++state_;
    Column &column = table_.get()[place];
    std::memcpy(column.decoid, decoid, sizeof column.decoid);
    column.decoidSize = static_cast<std::uint8_t>(std::strlen(decoid) + 1);
    column.nameSize = static_cast<std::uint16_t>(std::strlen(name));
    std::memcpy(column.name, name, column.nameSize + std::size_t{1});
}
