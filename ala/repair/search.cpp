#include "ala/repair/search.h"

#include <algorithm>

using namespace qvledger;

constexpr std::size_t kLearned = 4096;         // attributes
constexpr int kRecordsAhead = 16;              // that are asked what records begin with
constexpr int kValuesBehind = 64;              // that are followed behind a record
constexpr std::int64_t kCostOfCandidate = 336; // in bytes passed over: more than a tag has
constexpr std::int64_t kSkipped = 4096;        // bytes at a time, where the credit is used up
constexpr std::int64_t kAskAfter = 1 << 20;    // bytes
constexpr std::int64_t kWorthOnTrust = 64;     // of a byte read on trust for the first time
constexpr std::int64_t kWord = sizeof(std::uint32_t);

RecordSearch::RecordSearch(LogBytes &givenBytes, std::uint32_t verNum, std::int64_t begin,
                           SearchWatch &givenWatch)
    : bytes(givenBytes), reader(givenBytes, verNum), tags(givenBytes), watch(givenWatch), at(begin),
      notBefore(begin) {}

bool RecordSearch::ask(std::int64_t position) {
    if (position - askedAt < kAskAfter)
        return true;
    askedAt = position;
    stopped = !watch.goOn(position);
    return !stopped;
}

// ---- What records begin with ----

void RecordSearch::learn(const FoundRecord &record) {
    if (first.size() < kLearned)
        first.insert(record.identifiers.front());
    for (std::size_t i = 1; i < record.identifiers.size() && later.size() < kLearned; ++i)
        later.insert(record.identifiers[i]);
}

bool RecordSearch::isFragment(const FoundRecord &record) {
    const std::uint64_t identifier = record.identifiers.front();
    if (first.contains(identifier))
        return false;
    std::int64_t behind = record.end;
    for (int i = 0; i < kRecordsAhead && reader.readRecord(behind, &trial) == Fit::Whole; ++i) {
        learn(trial);
        behind = trial.end;
    }
    return !first.contains(identifier) && later.contains(identifier);
}

// ---- Searching ----

// Takes the record whose first tag that is, if it is one and may be given out.  What is cheap to tell comes
// first.
bool RecordSearch::takeIfRecord(std::int64_t tag) {
    const std::int64_t begin = tag - reader.headSize();
    const bool follows = ends[slotOf(tag)] == tag;
    FoundAttribute attribute = {};
    if (!bytes.pay(kCostOfCandidate) || reader.measureAttribute(tag, &attribute) != Fit::Whole)
        return false;
    if (attribute.endIsCertain)
        ends[slotOf(attribute.end)] = attribute.end;
    if (begin < notBefore || follows || !reader.measuresAsRecord(begin))
        return false;
    FoundRecord found = {};
    if (reader.readRecord(begin, &found) != Fit::Whole || isFragment(found))
        return false;
    found.faultBefore = fault;
    pending = std::move(found);
    return true;
}

// Finds the next record out of step.
bool RecordSearch::searchPending() {
    for (std::int64_t from = at;;) {
        const std::int64_t tag = tags.next(from);
        if (tag < 0 || !ask(tag))
            return false;
        bytes.passedOver(tag);
        if (!bytes.hasCredit()) {
            from = tag + kSkipped;
            continue;
        }
        if (takeIfRecord(tag))
            return true;
        from = tag + 1;
    }
}

// The record behind the last one.
bool RecordSearch::readInStep() {
    FoundRecord found = {};
    pendingInStep = false;
    fault = Fit::Whole;
    if (at >= bytes.size())
        return false;
    bytes.trust();
    fault = reader.readRecord(at, &found);
    const std::int64_t debt = bytes.settle();
    const std::int64_t passed = std::max<std::int64_t>(0, found.end - std::max(at, trustedTo));
    pendingDebt = std::max<std::int64_t>(0, debt - kWorthOnTrust * passed);
    trustedTo = std::max(trustedTo, found.end);
    pendingInStep = fault == Fit::Whole;
    if (pendingInStep)
        pending = std::move(found);
    else
        bytes.pay(pendingDebt);
    return pendingInStep;
}

// ---- What is behind a record ----

// Values that a damaged count of the record's last attribute would have left out.
bool RecordSearch::goesOnAsValues(std::int64_t end) {
    std::int64_t behind = end;
    FoundAttribute attribute = {};
    for (int i = 0; i < kValuesBehind; ++i) {
        const std::uint8_t *word = bytes.at(behind, kWord);
        if (word == nullptr || !bytes.pay(kWord))
            return false;
        std::uint32_t length = 0;
        std::copy_n(word, kWord, reinterpret_cast<std::uint8_t *>(&length));
        behind += kWord;
        if (length == 0 || length > bytes.size() - behind)
            return false;
        behind += length;
        if (behind == bytes.size() || reader.readAttribute(behind, &attribute) == Fit::Whole ||
            reader.readRecord(behind, &trial) == Fit::Whole)
            return true;
    }
    return false;
}

bool RecordSearch::mayEndHere(const FoundRecord &record) {
    if (reader.looksLikeRecord(record.end))
        return true;
    return record.endIsCertain && !goesOnAsValues(record.end);
}

const FoundRecord *RecordSearch::next() {
    if (!started)
        readInStep();
    started = true;
    while (!stopped) {
        if (!pending && (at >= bytes.size() || !searchPending()))
            return nullptr;
        given = std::move(*pending);
        pending.reset();
        const bool wasInStep = pendingInStep;
        const std::int64_t givenDebt = wasInStep ? pendingDebt : 0;
        at = notBefore = given.end;
        bytes.passedOver(at);
        // Before anything else is looked for, so that what is none costs no search.
        if (readInStep() || at >= bytes.size() || mayEndHere(given)) {
            if (wasInStep)
                learn(given);
            bytes.found(given.end - given.begin);
            return ask(given.end) ? &given : nullptr;
        }
        // It is none; what looked like it may hide another one.
        bytes.pay(givenDebt);
        at = given.begin;
        notBefore = given.begin + 1;
        fault = Fit::Whole;
    }
    return nullptr;
}
