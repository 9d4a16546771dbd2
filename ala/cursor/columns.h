// What the facility remembers of a record's attributes until the next record.
//
// Records of a log mostly have the same attributes at the same places.  A column is the attribute that stood
// at a place last: its object identifier and its name, which is not looked up again while it stays the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ala/log/log_input.h"
#include "platform/malloced.h"
#include "service/oid.h"

namespace qvledger {

// What an attribute keeps so that its column is found: its place among the record's attributes, which of a
// document's is that in the first document, and whether the column there was found to be this attribute.
class ColumnStamp {
public:
    ColumnStamp() = default;
    explicit ColumnStamp(std::uint32_t number) : place(number) {}

private:
    friend class Columns;
    std::uint32_t place = 0;
    std::uint64_t state = 0; // of the columns when it was found; 0: it was not
};

// The columns of a handle.
class Columns {
public:
    // The attribute's name, in a buffer of OID_NAME_SIZE bytes and with its NUL, if the column at its place
    // is still the same attribute; else without data.  It is good until the next call of a member.
    std::string_view recall(const char *decoid, ColumnStamp &stamp) const;

    // Remembers an attribute with its name.  Places far behind, and exhausted memory, are no failure: nothing
    // is remembered then.
    void remember(const char *decoid, const ColumnStamp &stamp, const char *name);

    // Names in another language are about to be asked for.
    void forget() { table.reset(); }

    // As long as this is the same, so are the names that are recalled.  No two columns ever have the same;
    // never 0 when a name was recalled.
    std::uint64_t currentState() const { return state; }

private:
    struct Column {
        std::uint8_t decoidSize; // with the NUL; 0 until something is remembered
        std::uint16_t nameSize;  // without it
        char decoid[kDecoidSize];
        char name[OID_NAME_SIZE];
    };

    Malloced<Column> table; // kPlaces of them; null until something is remembered
    std::uint64_t state = 0;
};

} // namespace qvledger
