// A cache of attribute names, used for all records that are read with a handle.
//
// Most records of a log have the same attributes in the same order.  A place is the index of an attribute in
// its record.  A column caches the object identifier and the name of the attribute that was last read at one
// place.  A name is looked up again only if the identifier at its place changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "ala/base/record.h"
#include "platform/malloced.h"
#include "service/oid/oid.h"

namespace qvledger {

// All columns of a handle.
class Columns {
public:
    // Returns the cached name of an attribute, or a view with null data if the name is not cached.  The name
    // is NUL-terminated, in a buffer of OID_NAME_SIZE bytes, and valid until the next call of a non-const
    // member.  names: the result of stateOf for the attribute's record, or 0.  If that state is still the
    // current one, recall() is faster because it does not compare decoid.
    std::string_view recall(std::uint32_t place, const char *decoid, std::uint64_t names = 0) const {
        if (table_ == nullptr || place >= kPlaces)
            return {};
        const Column &column = table_.get()[place];
        const bool isConfirmed = names == state_ && place >= first_ && place < end_;
        if (!isConfirmed &&
            (column.decoidSize == 0 || std::memcmp(column.decoid, decoid, column.decoidSize) != 0))
            return {};
        return {column.name, column.nameSize};
    }

    // Caches the name of an attribute.  Does nothing if the place is kPlaces or more, or when memory runs
    // out.
    void remember(std::uint32_t place, const char *decoid, const char *name);

    // Empties the cache, because the language of names is about to change.
    void forget() { table_.reset(); }

    // Returns a number that identifies the names now cached for the places from first to end (not included).
    // The number is different for different names or places.  Never 0.  REQUIRES: all these places are
    // cached.
    std::uint64_t stateOf(std::uint64_t first, std::uint64_t end) {
        if (first != first_ || end != end_) {
            first_ = first;
            end_ = end;
            ++state_;
        }
        return state_;
    }

private:
    static constexpr std::size_t kPlaces = 256; // maximum number of columns
    struct Column {
        std::uint8_t decoidSize; // bytes, NUL included; 0: the column is empty
        std::uint16_t nameSize;  // bytes, NUL not included
        char decoid[kDecoidSize];
        char name[OID_NAME_SIZE];
    };

    Malloced<Column> table_; // kPlaces columns; null: empty cache
    std::uint64_t state_ = 1;
    std::uint64_t first_ = 0; // state_ identifies the names of the places from first_ to end_
    std::uint64_t end_ = 0;   // this place is not included
};

} // namespace qvledger
