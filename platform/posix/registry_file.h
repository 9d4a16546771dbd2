// The registry file, the text format that registry editors export, parsed into keys and their values.
//
// registry.cpp implements the registry calls with it; docs/formats.md describes the format.
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
    std::string data; // bytes; a text includes its NUL
};

// A key's values in the file's order.
class RegistryKey {
public:
    // Adds a value.  An existing value of that name, compared without case, keeps its place and gets the new
    // type and data.
    void set(RegistryValue value);
    const RegistryValue *find(std::string_view name) const;
    const std::vector<RegistryValue> &all() const { return values_; }

    std::size_t line = 0; // of the file where it first occurs, counted from 1

private:
    std::vector<RegistryValue> values_;
    std::unordered_map<std::string, std::size_t> places_; // by name in lower case
};

// The keys below HKEY_LOCAL_MACHINE.  Paths are relative to it and compare without case.
class Registry {
public:
    RegistryKey &make(std::string_view path);
    // Removes and returns a key; nothing if it does not exist.  A key also exists, without values, if only a
    // key below it was made.
    std::optional<RegistryKey> take(std::string_view path);

private:
    std::map<std::string, RegistryKey> keys_; // by path in lower case
};

// Where a file is malformed.
struct RegistryFault {
    std::size_t line; // counted from 1
    const char *reason;
};

// Adds a file's keys and values.  If the file is malformed, adds those before the fault and returns it.
std::optional<RegistryFault> parseRegistry(std::string_view bytes, Registry &registry);

} // namespace qvledger
