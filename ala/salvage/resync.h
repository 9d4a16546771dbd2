// Finds the intact records of a log, in order, also after damage.
//
// Records have no mark.  A record is a maximal run of sound attributes whose length its head gives;
// docs/architecture.md ("Damaged logs") has the rules.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "ala/driver/check.h"
#include "ala/salvage/record_parser.h"

namespace qvledger {

struct FoundRecord {
    std::int64_t begin; // of the head
    RecordHead head;
    Run run;
    bool inStep;       // begins where the header, a record or sound attributes end
    Fault faultBefore; // what was wrong where the record before it ends
};

class Resync {
public:
    // The records from `begin` on, the end of the log's header.
    Resync(LogBytes &bytes, std::uint32_t verNum, std::int64_t begin, CheckWatch &watch);

    // The next intact record, valid until the next call; null after the last one, and when the watch gave up.
    // Throws std::bad_alloc.
    const FoundRecord *next();

    // After the last record: what was wrong where it ends.
    Fault lastFault() const { return place_.fault; }
    bool gaveUp() const { return stopped_; }
    // Bytes that were skipped unseen, because looking at them would have taken too long.
    std::int64_t unsearched() const { return unsearched_; }

private:
    // What attributes of the log's records have.
    struct Known {
        std::unordered_set<std::uint64_t> first;     // identifiers of first attributes
        std::unordered_set<std::uint64_t> later;     // and of others
        std::unordered_set<std::uint32_t> lastTypes; // unknown types of last values

        void learn(const Run &run);
    };

    // Where the search is.
    struct Place {
        std::int64_t at;
        std::int64_t floor;      // no record begins before it
        std::int64_t recordsEnd; // of the last record, or of the header
        bool inStep;             // sound bytes end there
        Fault fault;             // where the last record ends
    };

    // A run, and how it compares to the head before it.
    struct Candidate {
        bool isExpected; // a record or the header ends where it begins
        Fault headFault;
        RecordHead head;
        Run run;
        std::int64_t cost;
        bool fits;     // the head gives its number of attributes
        bool isClosed; // the log's end or another record follows it
    };

    bool step();
    Candidate read(std::int64_t tag, bool isExpected);
    bool decide(const Candidate &candidate);
    bool give(const Candidate &found);
    bool searchTag(std::int64_t *tag);
    bool goesOnAsValues(std::int64_t end);
    bool hidesRecord(const Run &run, std::int64_t *joined);
    void learnAfter(const Run &run);
    void newBudget();
    std::int64_t limit() const;
    bool canAfford() const;
    bool goTo(std::int64_t position, bool inStep);

    LogBytes &bytes_;
    RecordParser parser_;
    CheckWatch &watch_;
    Place place_;
    Known known_;
    bool learns_ = true; // from each record that directly follows another one
    bool onlyLearns_ = false;
    bool stopped_ = false;
    FoundRecord found_ = {};
    std::int64_t budgetFrom_ = 0; // the place and the cost since which the budget counts
    std::int64_t costBefore_ = 0;
    std::int64_t unsearched_ = 0;
    std::int64_t asked_ = 0;
};

} // namespace qvledger
