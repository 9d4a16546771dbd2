// Finds the intact records of a log in order, even after damage.  docs/architecture.md ("Damaged logs") has
// the rules and the terms.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "ala/driver/check.h"
#include "ala/salvage/record_parser.h"

namespace qvledger {

struct FoundRecord {
    std::int64_t begin; // start of the head
    RecordHead head;
    Run run;
    bool inStep;       // the header, a record or sound attributes end at `begin`
    Fault faultBefore; // fault found where the previous record, or the header, ends
};

class Resync {
public:
    // Searches from `begin`, the end of the log's header.
    Resync(LogBytes &bytes, std::uint32_t verNum, std::int64_t begin, CheckWatch &watch);

    // Finds the next intact record; the result is valid until the next call.  Null after the last record,
    // after a failed read (bytes.failed()) and after the watch gave up.  Throws std::bad_alloc.
    const FoundRecord *next();

    // After next() has returned null: the fault found where the last record, or the header, ends.
    Fault lastFault() const { return place_.fault; }
    bool gaveUp() const { return stopped_; }
    // The number of bytes skipped without a search, because the budget was used up.
    std::int64_t unsearched() const { return unsearched_; }

private:
    // Facts learned from the log's records.
    struct Known {
        std::unordered_set<std::uint64_t> first;     // hashes of first attributes' identifiers
        std::unordered_set<std::uint64_t> later;     // hashes of other attributes' identifiers
        std::unordered_set<std::uint32_t> lastTypes; // types of last values whose end was not certain

        void learn(const Run &run);
    };

    // The state of the search.
    struct Place {
        std::int64_t at;
        std::int64_t floor;      // no record begins before this position
        std::int64_t recordsEnd; // end of the last record found, or of the header
        bool inStep;             // read the next head at `at`, without a search
        Fault fault;             // fault found where the last record ends
    };

    // A run and the head before it.
    struct Candidate {
        bool isExpected; // a record or the header ends where this head begins
        Fault headFault;
        RecordHead head;
        Run run;
        std::int64_t cost;
        bool fits;     // the head is sound, not before the floor, and counts the run's attributes
        bool isClosed; // a boundary follows the run (RecordParser::isBoundary)
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
    bool learns_ = true;      // learn from records that directly follow a record or the header
    bool onlyLearns_ = false; // true during learnAfter()
    bool stopped_ = false;
    FoundRecord found_ = {};
    std::int64_t budgetFrom_ = 0; // position when the budget began
    std::int64_t costBefore_ = 0; // cost when the budget began
    std::int64_t unsearched_ = 0;
    std::int64_t asked_ = 0; // position at the last call of the watch
};

} // namespace qvledger
