// The names of a record's attributes, remembered until the next record.
//
// Records of a log mostly have the same attributes at the same places.  A column is the attribute that stood
// at a place last: its object identifier and its name, which is not looked up again while it stays the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "ala/base/record.h"
#include "platform/malloced.h"
#include "service/oid/oid.h"

namespace qvledger {

// The columns of a handle.
class Columns {
public:
    // The attribute's name, in a buffer of OID_NAME_SIZE bytes and with its NUL, if it is what stood at the
    // place last; else without data.  Good until the next call of a member.  names: what stateOf gave for the
    // attribute's record, or 0.
    std::string_view recall(std::uint32_t place, const char *decoid, std::uint64_t names = 0) const {
        if (table_ == nullptr || place >= kPlaces)
            return {};
        const Column &column = table_.get()[place];
        const bool isFound = names == state_ && place >= first_ && place < end_;
        if (!isFound &&
            (column.decoidSize == 0 || std::memcmp(column.decoid, decoid, column.decoidSize) != 0))
            return {};
        return {column.name, column.nameSize};
    }

    // Remembers an attribute with its name.  Later places, and exhausted memory, are no failure: nothing is
    // remembered then.
    void remember(std::uint32_t place, const char *decoid, const char *name);

    // Names in another language are about to be asked for.
    void forget() { table_.reset(); }

    // A number for the names from one place to another, which are all remembered: another one for any other
    // names or places.  Never 0.
    std::uint64_t stateOf(std::uint64_t first, std::uint64_t end) {
        if (first != first_ || end != end_) {
            first_ = first;
            end_ = end;
            ++state_;
        }
        return state_;
    }

private:
    static constexpr std::size_t kPlaces = 256; // remembered
    struct Column {
        std::uint8_t decoidSize; // with the NUL; 0 until something is remembered
        std::uint16_t nameSize;  // without it
        char decoid[kDecoidSize];
        char name[OID_NAME_SIZE];
    };

    Malloced<Column> table_; // kPlaces of them; null until something is remembered
    std::uint64_t state_ = 1;
    std::uint64_t first_ = 0; // the places that the state is of
    std::uint64_t end_ = 0;
};

} // namespace qvledger
