#include "ala/salvage/resync.h"

#include <algorithm>

#include "ala/log/log_file.h"

using namespace qvledger;

constexpr int kValuesAfterRecord = 64; // most values that goesOnAsValues() reads
constexpr std::size_t kMostKnown = 4096;
constexpr std::int64_t kAskAfter = 1 << 20; // bytes between calls of the watch
// Bytes searched for a tag at a time, or skipped once the budget is used up.  Skipping that many bytes adds
// enough budget for a few records.
constexpr std::int64_t kSearchStep = 128 << 10;

// The budget for all reading that finds no record is this many bytes read sequentially, plus the number of
// bytes by which the search has advanced.  Random damage costs far less.
constexpr std::int64_t kCredit = 64 << 20;

Resync::Resync(LogBytes &bytes, std::uint32_t verNum, std::int64_t begin, CheckWatch &watch)
    : bytes_(bytes), parser_(bytes, verNum), watch_(watch), place_{begin, begin, begin, true, Fault::None} {
    newBudget();
}

void Resync::Known::learn(const Run &run) {
    if (first.size() + later.size() + lastTypes.size() >= kMostKnown)
        return;
    first.insert(run.identifiers.front());
    later.insert(run.identifiers.begin() + 1, run.identifiers.end());
    if (!run.endIsCertain)
        lastTypes.insert(run.lastType);
}

void Resync::newBudget() {
    budgetFrom_ = place_.at;
    costBefore_ = bytes_.cost();
}

// The highest bytes_.cost() that the budget allows at the current position.
std::int64_t Resync::limit() const {
    return costBefore_ + kCredit + place_.at - budgetFrom_;
}

bool Resync::canAfford() const {
    return bytes_.cost() <= limit();
}

// Reads the rest of the log after the run and learns from the records found there, then returns to the run.
void Resync::learnAfter(const Run &run) {
    const Place here = place_;
    onlyLearns_ = true;
    goTo(run.end, run.attributes != 0);
    newBudget();
    while (next() != nullptr) {
    }
    learns_ = onlyLearns_ = false;
    place_ = here;
    asked_ = here.at;
    unsearched_ = 0;
    newBudget();
}

// Can the bytes at `end` be further values of the attribute that ends there, because its count of values is
// damaged?
bool Resync::goesOnAsValues(std::int64_t end) {
    for (int i = 0; i < kValuesAfterRecord && canAfford(); ++i) {
        const std::uint8_t *word = bytes_.at(end, kWord);
        const std::uint32_t length = word != nullptr ? nativeWord(word) : 0;
        bytes_.addCost(kWord);
        end += kWord;
        if (length == 0 || length > bytes_.size() - end)
            return false;
        end += length;
        // A few stray bytes pass for a part of a head, so only a whole head counts.
        const bool isHead = bytes_.size() - end >= parser_.headSize() && parser_.isBoundary(end);
        if (end == bytes_.size() || isHead || parser_.follow(end, limit()).attributes != 0)
            return true;
    }
    return false;
}

// Does a record begin in the run's last attribute?  If this record ends after the attribute, and the log's
// end or another record follows, then other bytes have overwritten the attribute's end.  *joined is then the
// position of this record, or of the first of the adjacent records that lead to it.  Otherwise *joined is -1.
bool Resync::hidesRecord(const Run &run, std::int64_t *joined) {
    const std::int64_t until = std::min(bytes_.size(), run.end + parser_.headSize());
    *joined = -1;
    std::int64_t chain = -1; // position of the first of the adjacent records; -1: none found
    std::int64_t chainEnd = -1;
    std::int64_t tag = run.last + parser_.headSize();
    while (canAfford() && (tag = bytes_.nextTag(tag + 1, until)) < until) {
        RecordHead head = {};
        if (parser_.readHead(tag, &head) != Fault::None || !head.documentsFill())
            continue;
        const Run inner = parser_.follow(tag, limit());
        if (inner.attributes != head.numAttr || !known_.first.contains(inner.identifiers.front()))
            continue;
        const std::int64_t begin = tag - parser_.headSize();
        if (begin != chainEnd)
            chain = begin;
        chainEnd = inner.end;
        if (inner.end > run.end) {
            if (parser_.isBoundary(inner.end))
                *joined = chain;
            break;
        }
        tag = inner.end + parser_.headSize() - 1;
    }
    return chain >= 0;
}

// Moves to the next bytes that look like a tag.  If the next kSearchStep bytes contain no such bytes,
// moves past them and returns false.  If the budget is used up, skips kSearchStep bytes and returns false.
bool Resync::searchTag(std::int64_t *tag) {
    if (!canAfford()) {
        const std::int64_t skipped = std::min(kSearchStep, bytes_.size() - place_.at);
        unsearched_ += skipped;
        place_.at += skipped;
        return false;
    }
    const std::int64_t until = std::min(bytes_.size(), place_.at + kSearchStep);
    *tag = place_.at = bytes_.nextTag(place_.at, until);
    return *tag < until;
}

bool Resync::give(const Candidate &found) {
    bytes_.addCost(-found.cost); // reading a record costs no budget
    const Run &run = found.run;
    found_ = {run.begin - parser_.headSize(), found.head, run, place_.inStep, place_.fault};
    if (learns_ && found_.begin == place_.recordsEnd)
        known_.learn(run);
    place_ = {run.end, run.end, run.end, true, Fault::None};
    return true;
}

bool Resync::goTo(std::int64_t position, bool inStep) {
    place_.at = place_.floor = position;
    place_.inStep = inStep;
    return false;
}

Resync::Candidate Resync::read(std::int64_t tag, bool isExpected) {
    const std::int64_t before = bytes_.cost();
    Candidate candidate = {};
    candidate.isExpected = isExpected;
    candidate.headFault = parser_.readHead(tag, &candidate.head);
    const bool headIsSound = candidate.headFault == Fault::None;
    candidate.run = parser_.follow(tag, limit(), isExpected && headIsSound ? candidate.head.numAttr : 0);
    candidate.cost = bytes_.cost() - before;
    const Run &run = candidate.run;
    candidate.fits =
        headIsSound && tag - parser_.headSize() >= place_.floor && candidate.head.numAttr == run.attributes;
    candidate.isClosed = run.attributes != 0 && parser_.isBoundary(run.end);
    return candidate;
}

// The fault of an expected record.
static Fault faultOf(Fault headFault, const RecordHead &head, const Run &run) {
    if (headFault != Fault::None)
        return headFault;
    if (head.numAttr > run.attributes)
        return run.fault;
    return head.numAttr < run.attributes ? Fault::MoreAttributes : Fault::BadEnd;
}

// Searches for a run, if necessary, and reads it.  True if the run is a record.
bool Resync::step() {
    const bool isExpected = place_.inStep && place_.at == place_.recordsEnd;
    place_.inStep = isExpected || (place_.inStep && canAfford());
    std::int64_t tag = place_.at + parser_.headSize();
    if (!place_.inStep && !searchTag(&tag))
        return false;
    const Candidate candidate = read(tag, isExpected);
    const Run &run = candidate.run;
    if (isExpected && candidate.fits && candidate.isClosed && run.fault != Fault::CutOff)
        return give(candidate);
    if (isExpected)
        place_.fault = faultOf(candidate.headFault, candidate.head, run);
    // If the log ends inside the attribute after the run, nothing in that attribute is a record.  Assume this
    // only where a record is expected: elsewhere, a text could contain the beginning of such an attribute and
    // hide all later records.
    const bool isCutTag = candidate.head.numAttr > run.attributes && bytes_.size() - run.end < kTagSize;
    if (isExpected && (run.fault == Fault::CutOff || isCutTag))
        return goTo(bytes_.size(), true);
    if (learns_ && !onlyLearns_)
        learnAfter(run);
    if (run.fault == Fault::TooCostly)
        return goTo(run.end, false);
    if (run.attributes != 0)
        return decide(candidate);
    place_.at += place_.inStep ? 0 : 1;
    place_.inStep = false;
    return false;
}

// Decides whether a run is a record.  Called if no record is expected here, or if the head does not fit the
// run or no boundary follows.
bool Resync::decide(const Candidate &candidate) {
    const Run &run = candidate.run;
    const bool isUsual = candidate.isExpected && candidate.fits && known_.lastTypes.contains(run.lastType);
    std::int64_t joined = -1;
    const bool hides = !candidate.isClosed && (run.endIsCertain || isUsual) && hidesRecord(run, &joined);
    if (run.endIsCertain && joined >= 0)
        return goTo(joined, false);
    const bool endIsKnown = run.endIsCertain || (isUsual && !hides);
    const bool mayEnd = candidate.isClosed || (place_.inStep && endIsKnown && !goesOnAsValues(run.end));
    // A run found out of step can be the rest of a damaged record.  A head of three words fits by chance less
    // often than a head of one word.
    const std::uint64_t first = run.identifiers.front();
    const bool mayBeFirst =
        parser_.headSize() > kWord ? !known_.later.contains(first) : onlyLearns_ && known_.first.empty();
    const bool mayBegin = candidate.head.documentsFill() && (mayBeFirst || known_.first.contains(first));
    if (candidate.fits && mayEnd && (place_.inStep || mayBegin))
        return give(candidate);
    if (!candidate.isClosed && !run.endIsCertain)
        return goTo(run.last + 1, true);
    // Do not charge for the run's bytes, because they are not read again.
    bytes_.addCost(-std::min(candidate.cost, run.end - run.begin));
    return goTo(run.end, true);
}

const FoundRecord *Resync::next() {
    while (!stopped_ && !bytes_.failed() && place_.at < bytes_.size()) {
        const bool isFound = step();
        if (place_.at - asked_ >= kAskAfter) {
            asked_ = place_.at;
            stopped_ = !watch_.goOn(onlyLearns_ ? budgetFrom_ : place_.at);
        }
        if (isFound && !stopped_)
            return &found_;
    }
    return nullptr;
}
