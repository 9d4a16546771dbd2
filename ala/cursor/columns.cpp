#include "ala/cursor/columns.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

constexpr std::size_t kPlaces = 256; // remembered

// A state of a handle's columns; no two states of any handles have the same.
static std::atomic<std::uint64_t> states;

const ALA__column *ALA__RecallColumn(ALA_handle_t in_handle, attrValNode *inoutp_node) {
    if (in_handle->columns == nullptr || inoutp_node->place >= kPlaces)
        return nullptr;
    const ALA__column &column = in_handle->columns[inoutp_node->place];
    if (inoutp_node->columnsState == in_handle->columnsState)
        return &column;
    if (column.decoidSize == 0 || std::memcmp(column.decoid, inoutp_node->decoid, column.decoidSize) != 0)
        return nullptr;
    inoutp_node->columnsState = in_handle->columnsState;
    return &column;
}

void ALA__RememberColumn(ALA_handle_t in_handle, const attrValNode &in_node, const char *inp_name) {
    if (in_node.place >= kPlaces)
        return;
    if (in_handle->columns == nullptr)
        in_handle->columns = static_cast<ALA__column *>(std::calloc(kPlaces, sizeof(ALA__column)));
    if (in_handle->columns == nullptr)
        return;
    in_handle->columnsState = ++states;
    ALA__column &column = in_handle->columns[in_node.place];
    std::memcpy(column.decoid, in_node.decoid, sizeof column.decoid);
    column.decoidSize = static_cast<std::uint8_t>(std::strlen(in_node.decoid) + 1);
    column.nameSize = static_cast<std::uint16_t>(std::strlen(inp_name));
    std::memcpy(column.name, inp_name, column.nameSize + std::size_t{1});
}

void ALA__ForgetColumns(ALA_handle_t in_handle) {
    std::free(in_handle->columns);
    in_handle->columns = nullptr;
}
