// A cache of attribute names from record to record.
//
// Most records of a log have the same attributes in the same order.  A column is the last attribute seen at
// a place (index) in a record: its object identifier and its name.  The name is looked up again only if the
// identifier changes.
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
    // The cached name of the attribute, or a view with null data.  The name is NUL-terminated, in a buffer of
    // OID_NAME_SIZE bytes, and valid until the next call of a non-const member.  names: the result of
    // stateOf for the attribute's record, or 0; with the current state decoid is not compared.
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

    // Caches the name of an attribute.  Does nothing for a place above the limit or when memory runs out.
    void remember(std::uint32_t place, const char *decoid, const char *name);

    // Empties the cache, because the language of names is about to change.
    void forget() { table_.reset(); }

    // A number that identifies the cached names of the places from first to end (not included), and differs
    // for any other names or places.  Never 0.  REQUIRES: all these places are cached.
    std::uint64_t stateOf(std::uint64_t first, std::uint64_t end) {
        if (first != first_ || end != end_) {
            first_ = first;
            end_ = end;
            ++state_;
        }
        return state_;
    }

private:
    static constexpr std::size_t kPlaces = 256; // that are cached
    struct Column {
        std::uint8_t decoidSize; // with its NUL; 0: empty column
        std::uint16_t nameSize;  // without its NUL
        char decoid[kDecoidSize];
        char name[OID_NAME_SIZE];
    };

    Malloced<Column> table_; // kPlaces columns; null: empty cache
    std::uint64_t state_ = 1;
    std::uint64_t first_ = 0; // state_ identifies the names of the places [first_, end_)
    std::uint64_t end_ = 0;
};

} // namespace qvledger
