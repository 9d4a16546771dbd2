// What the attributes of a log's records say about where a record begins.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "ala/repair/attribute.h"

namespace qvledger {

class KnownIdentifiers {
public:
    // From a record that is known to be one.
    void learn(const FoundRecord &record);

    // Does some record begin with an attribute of that identifier?
    bool begins(std::uint64_t identifier) const { return first.contains(identifier); }
    bool onlyBegins(std::uint64_t identifier) const { return begins(identifier) && !stands(identifier); }
    bool neverBegins(std::uint64_t identifier) const { return !begins(identifier) && stands(identifier); }

    // Has some record that many attributes a document?
    bool hasDocumentsOf(std::uint32_t count) const { return perDocument.contains(count); }

    // Has some record exactly those attributes, without the first so many, behind others?
    bool endsLike(const FoundRecord &record, std::size_t without) const;

private:
    bool stands(std::uint64_t identifier) const { return later.contains(identifier); }

    std::unordered_set<std::uint64_t> first; // attributes that records begin with
    std::unordered_set<std::uint64_t> later; // attributes that stand further behind
    std::unordered_set<std::uint32_t> perDocument;
    std::unordered_set<std::uint64_t> tails; // mixed identifiers from one of those on to the last
};

// Asked and told while a log is searched.
class SearchWatch {
public:
    // Up to where it was searched.  False: give up.
    virtual bool goOn(std::int64_t position) = 0;

protected:
    ~SearchWatch() = default;
};

// Learns from all records from there on that stand in step behind another one.  What begins such a run may be
// the rest of a damaged record, so nothing is learned from it.  It ends where long nothing is found.  False
// when the watch gave up.
bool survey(const LogBytes &log, std::uint32_t verNum, std::int64_t begin, SearchWatch &watch,
            KnownIdentifiers &known);

} // namespace qvledger
