#include "ala/cursor/columns.h"

#include <cstdlib>
#include <cstring>

constexpr std::size_t kPlaces = 256; // remembered

const ALA__column *ALA__RecallColumn(ALA_handle_t in_handle, const attrValNode &in_node) {
    if (in_handle->columns == nullptr || in_node.place >= kPlaces)
        return nullptr;
    const ALA__column &column = in_handle->columns[in_node.place];
    return column.decoid[0] != '\0' && std::strcmp(column.decoid, in_node.decoid) == 0 ? &column : nullptr;
}

void ALA__RememberColumn(ALA_handle_t in_handle, const attrValNode &in_node, const char *inp_name) {
    if (in_node.place >= kPlaces)
        return;
    if (in_handle->columns == nullptr)
        in_handle->columns = static_cast<ALA__column *>(std::calloc(kPlaces, sizeof(ALA__column)));
    if (in_handle->columns == nullptr)
        return;
    ALA__column &column = in_handle->columns[in_node.place];
    std::memcpy(column.decoid, in_node.decoid, sizeof column.decoid);
    std::memcpy(column.oid, in_node.oid, sizeof column.oid);
    std::memcpy(column.name, inp_name, std::strlen(inp_name) + 1);
}

void ALA__ForgetColumns(ALA_handle_t in_handle) {
    std::free(in_handle->columns);
    in_handle->columns = nullptr;
}
