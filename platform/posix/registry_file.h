// Parses the registry file, which has the text format that registry editors export, into keys and values.
//
// registry.cpp implements the registry calls with this parser; docs/formats.md describes the format.
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
    std::string data; // bytes; a text usually includes a NUL, but not if the file gives its bytes without one
};

// A key's values in the file's order.  Ignores the case of ASCII letters in names.
class RegistryKey {
public:
    // Adds a value.  If the key already has a value of that name, replaces that value's type and data.
    void set(RegistryValue value);
    // Finds a value by name; null if there is no such value.
    const RegistryValue *find(std::string_view name) const;
    const std::vector<RegistryValue> &all() const { return values_; }

    // Line where the key first occurs, counted from 1; 0 if only keys below this key occur.
    std::size_t line = 0;

private:
    std::vector<RegistryValue> values_;
    std::unordered_map<std::string, std::size_t> places_; // index in values_, by name in lower case
};

// The keys below HKEY_LOCAL_MACHINE.  Paths are relative to HKEY_LOCAL_MACHINE; the case of ASCII letters is
// ignored.
class Registry {
public:
    // Returns the key at a path; adds the key if it does not exist.
    RegistryKey &make(std::string_view path);
    // Removes and returns a key; nothing if the key does not exist.  A key also exists, without values, if a
    // key below it was made.
    std::optional<RegistryKey> take(std::string_view path);

private:
    std::map<std::string, RegistryKey> keys_; // each key by its path in lower case
};

// Where and why a file is malformed.
struct RegistryFault {
    std::size_t line; // counted from 1
    const char *reason;
};

// Adds a file's keys and values, and returns nothing.  If the file is malformed, adds the keys and values
// before the fault, and returns the fault.
std::optional<RegistryFault> parseRegistry(std::string_view bytes, Registry &registry);

} // namespace qvledger
