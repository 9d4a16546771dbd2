// The registry file: the text form that registry editors export, as keys and their values.
//
// registry.cpp answers the registry calls from it; docs/formats.md describes the format.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/os.h"

namespace qvledger {

struct RegistryValue {
    std::string name; // empty for the unnamed value
    DWORD type;       // REG_SZ, REG_DWORD, ...
    std::string data; // bytes; a text with its NUL
};

// A key's values in the file's order.
class RegistryKey {
public:
    // A value that is there already, in any case, gets the new type and data and keeps its place.
    void set(RegistryValue value);
    const RegistryValue *find(std::string_view name) const;
    const std::vector<RegistryValue> &all() const { return values_; }

    std::size_t line = 0; // of the file at which it stands first, counted from 1

private:
    std::vector<RegistryValue> values_;
    std::unordered_map<std::string, std::size_t> places_; // by name in lower case
};

// The keys below HKEY_LOCAL_MACHINE.  Paths are relative to it and compare without case.
class Registry {
public:
    RegistryKey &make(std::string_view path);
    // Removes the key and gives it.  A key is also there when only one below it was made; then it has no
    // values.
    std::optional<RegistryKey> take(std::string_view path);

private:
    std::map<std::string, RegistryKey> keys_; // by path in lower case
};

// Where a file is malformed.
struct RegistryFault {
    std::size_t line; // counted from 1
    const char *reason;
};

// Adds what a file holds.  On a fault the registry holds what came before it.
std::optional<RegistryFault> parseRegistry(std::string_view bytes, Registry &registry);

} // namespace qvledger
