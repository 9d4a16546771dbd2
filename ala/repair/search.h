// The intact records of a log, in order, those behind damage included.
//
// Records have no mark of their own, so where one begins is known in two ways.  In step: the one before it,
// or the header, ends there.  Out of step, behind damage: a run of attributes begins there that has no
// further one behind it and is exactly as long as the words in front of it say.  The rest of a record whose
// front was destroyed can look like that, too: in front of its remaining attributes stands a value that
// happens to be their number.  What tells is what records of the log, known as such because they stand behind
// another one, begin with, and what they have further behind (KnownIdentifiers).  A sound attribute that
// would end at the first tag makes a rest of it, unless records begin with that one and never have it later;
// one that is not sound does so unless records begin with it.
// Else it is none if records begin with that identifier.  If they do not, it is a rest if a known record ends
// in the same identifiers, or has that one later and no record or end of the log is behind it; where but one
// word has to fit, each of the last two is enough.
//
// For the same reason an attribute behind a record, which its count leaves out, does not make it damaged if
// that identifier only begins records, or if there is damage among those from there on: it is then what is
// left of the next one.
//
// A record is given out once it is known what is behind it: another record, or the log's end.  Where damage
// begins right behind it, the head of a record has to be left.  Where even that is destroyed, its last value
// has to tell its own end, and what follows must not read as further values of it that lead to a record or to
// the log's end, for then its own count was damaged.  If that value may have any length, what follows has to
// be damaged by itself: there is nothing but zeros, or the attributes of a record whose front is destroyed.
// Nor may a record begin in its last attribute: then a cut took its last bytes, and the first ones of the
// next record stand in their place.
//
// What lies within a sound attribute of a known type is none, for any user can choose a text.
//
// Out of step, documents have to fill the record, and a record without one has to tell no number of
// attributes a document that no other one has.
//
// What is looked at in vain is paid for (LogBytes::pay), and values are unpacked only once all else fits, so
// the cost grows with the length of the log alone.  Where a record is expected it is read whatever it costs,
// so that no sound log is called damaged; only bytes that are read a second time in vain are paid for then.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "ala/repair/attribute.h"
#include "ala/repair/known_identifiers.h"
#include "ala/repair/tag_scan.h"

namespace qvledger {

class RecordSearch {
public:
    RecordSearch(LogBytes &givenBytes, std::uint32_t givenVersion, std::int64_t begin, SearchWatch &watch);

    // The next intact record; null behind the last one, and when the watch gave up.  Good until the next
    // call.
    const FoundRecord *next();

    // Behind the last record: what was wrong where one more was expected.
    Fit lastFault() const { return fault; }
    bool gaveUp() const { return stopped; }

private:
    static constexpr std::size_t kEnds = 4093;

    struct Extent {
        std::int64_t begin, end;
    };

    bool readInStep();
    bool searchPending();
    bool leadsOn(std::int64_t begin, std::uint32_t *numAttr);
    bool isRestOfNext(std::int64_t begin);
    bool isBlank(std::int64_t begin);
    bool mayEndHere(const FoundRecord &record);
    bool goesOnAsValues(std::int64_t end);
    bool takeIfRecord(std::int64_t tag);
    bool takesFromNext(const FoundRecord &record);
    bool countsFit(const RecordHead &head);
    bool isPartOf(const Extent &around, const FoundRecord &record);
    static std::size_t slotOf(std::int64_t position) { return static_cast<std::size_t>(position) % kEnds; }
    bool isSound(const Extent &front);
    bool mayBegin(std::uint64_t identifier, const Extent &front);
    bool isRest(const FoundRecord &record);
    bool fitsBehind(const FoundRecord &record);
    const KnownIdentifiers &surveyed(std::int64_t begin);
    Fit read(std::int64_t begin, FoundRecord *record);
    Fit judged(Fit fit, FoundRecord *record);
    bool ask(std::int64_t position);

    LogBytes &bytes;
    std::uint32_t verNum;
    RecordReader reader;
    TagScan tags;
    SearchWatch &watch;
    std::int64_t at;        // behind the last record that was looked at
    std::int64_t notBefore; // no record is looked for before it
    bool started = false;
    bool stopped = false;
    bool pendingInStep = false;
    std::int64_t pendingDebt = 0;       // to be paid if it turns out to be none
    std::int64_t trustedTo = 0;         // up to where bytes were read on trust
    std::optional<FoundRecord> pending; // the record behind the one given out
    FoundRecord given = {};
    FoundRecord trial = {};
    FoundRecord behindRest = {};
    // Attributes by where they end.  One may take another one's slot: what is forgotten then is found where
    // tags are so dense that damage alone can have made them.
    std::array<Extent, kEnds> ends = {};
    Extent widest = {}; // the one that ends last
    KnownIdentifiers known;
    bool hasSurveyed = false;
    Fit fault = Fit::Whole;
    std::int64_t askedAt = 0;
};

} // namespace qvledger
