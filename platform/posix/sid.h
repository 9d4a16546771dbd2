// Security identifiers of local users and groups: S-1-22-1-uid and S-1-22-2-gid.
#pragma once

#include <cstdint>

namespace qvledger {

// The memory layout of a security identifier, which must not change.
struct Sid {
    std::uint8_t revision;
    std::uint8_t subAuthorityCount;
    std::uint8_t authority[6]; // big-endian
    std::uint32_t subAuthority[2];
};
static_assert(sizeof(Sid) == 16);

constexpr std::uint32_t kSidOfUser = 1;
constexpr std::uint32_t kSidOfGroup = 2;

constexpr Sid makeSid(std::uint32_t kind, std::uint32_t id) {
    return {1, 2, {0, 0, 0, 0, 0, 22}, {kind, id}};
}

} // namespace qvledger
