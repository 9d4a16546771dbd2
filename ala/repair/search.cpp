#include "ala/repair/search.h"

#include <algorithm>

using namespace qvledger;

constexpr int kValuesBehind = 64;              // that are followed behind a record
constexpr std::int64_t kCostOfCandidate = 336; // in bytes passed over: more than a tag has
constexpr std::int64_t kSkipped = 4096;        // bytes at a time, where the credit is used up
constexpr std::int64_t kLongestGap = 16384;    // bytes that were damaged, in which it is looked for a tag
constexpr std::int64_t kAskAfter = 1 << 20;    // bytes
constexpr std::int64_t kWorthOnTrust = 64;     // of a byte read on trust for the first time
constexpr std::int64_t kWord = sizeof(std::uint32_t);

RecordSearch::RecordSearch(LogBytes &givenBytes, std::uint32_t givenVersion, std::int64_t begin,
                           SearchWatch &givenWatch)
    : bytes(givenBytes), verNum(givenVersion), reader(givenBytes, givenVersion), tags(givenBytes),
      watch(givenWatch), at(begin), notBefore(begin) {}

bool RecordSearch::ask(std::int64_t position) {
    if (stopped || position - askedAt < kAskAfter)
        return !stopped;
    askedAt = position;
    stopped = !watch.goOn(position);
    return !stopped;
}

// ---- What records begin with ----

const KnownIdentifiers &RecordSearch::surveyed(std::int64_t begin) {
    if (!hasSurveyed && !survey(bytes, verNum, begin, watch, known))
        stopped = true;
    hasSurveyed = true;
    return known;
}

// As readRecord, but a record in front of the rest of one is whole.
Fit RecordSearch::read(std::int64_t begin, FoundRecord *record) {
    return judged(reader.readRecord(begin, record), record);
}

Fit RecordSearch::judged(Fit fit, FoundRecord *record) {
    std::uint32_t left = 0;
    record->isBeforeRest =
        fit == Fit::MoreBehind &&
        surveyed(record->begin).endsLike(*record, 1) && // or its count may be damaged
        (known.onlyBegins(record->further) || (!leadsOn(record->end, &left) && bytes.hasCredit()));
    return record->isBeforeRest ? Fit::Whole : fit;
}

// Is behind the attributes from there on a record or the log's end?
bool RecordSearch::leadsOn(std::int64_t begin, std::uint32_t *numAttr) {
    FoundAttribute attribute = {};
    *numAttr = 0;
    for (; reader.readAttribute(begin, &attribute) == Fit::Whole; ++*numAttr)
        begin = attribute.end;
    return begin == bytes.size() || reader.readRecord(begin, &behindRest) == Fit::Whole;
}

bool RecordSearch::isSound(const Extent &front) {
    FoundAttribute attribute = {};
    const Fit fit = reader.readAttribute(front.begin, &attribute);
    return fit == Fit::Whole || fit == Fit::TooCostly;
}

// As far as its first attribute and the one in front of that tell.
bool RecordSearch::mayBegin(std::uint64_t identifier, const Extent &front) {
    // Even one that is not sound may have become so by what looks like a count of attributes in it.
    if (front.end != 0)
        return surveyed(front.begin).begins(identifier) && (known.onlyBegins(identifier) || !isSound(front));
    if (known.begins(identifier) || surveyed(notBefore).begins(identifier))
        return true;
    return reader.headSize() > kWord || !known.neverBegins(identifier);
}

bool RecordSearch::fitsBehind(const FoundRecord &record) {
    return record.end == bytes.size() || record.isBeforeRest || read(record.end, &trial) == Fit::Whole;
}

// Of a record that begins as none is known to.  More words of a head are less likely to fit by chance.
bool RecordSearch::isRest(const FoundRecord &record) {
    if (known.endsLike(record, 0))
        return true;
    const bool fits = fitsBehind(record);
    return !fits && (reader.headSize() == kWord || known.neverBegins(record.identifiers.front()));
}

// Documents fill a record.  One that has none may still say how many attributes they have here.
bool RecordSearch::countsFit(const RecordHead &head) {
    if (reader.headSize() == kWord)
        return true;
    const std::uint32_t ofDocuments = head.numAttr - head.numJobAttr;
    if (ofDocuments != 0)
        return head.docAttrPerDoc != 0 && ofDocuments % head.docAttrPerDoc == 0;
    return head.docAttrPerDoc == 0 || surveyed(notBefore).hasDocumentsOf(head.docAttrPerDoc);
}

// A text that a user chose may hold what looks like a record.
bool RecordSearch::isPartOf(const Extent &around, const FoundRecord &record) {
    FoundAttribute attribute = {};
    return record.begin > around.begin && record.end <= around.end &&
           reader.readAttribute(around.begin, &attribute) == Fit::Whole && attribute.endIsCertain;
}

// ---- Searching ----

// Takes the record whose first tag that is, if it is one and may be given out.  What is cheap to tell comes
// first.
bool RecordSearch::takeIfRecord(std::int64_t tag) {
    const std::int64_t begin = tag - reader.headSize();
    const Extent front = ends[slotOf(tag)].end == tag ? ends[slotOf(tag)] : Extent{};
    FoundAttribute attribute = {};
    RecordHead head = {};
    if (!bytes.pay(kCostOfCandidate) || reader.measureAttribute(tag, &attribute) != Fit::Whole)
        return false;
    ends[slotOf(attribute.end)] = {tag, attribute.end};
    const Extent around = widest;
    if (attribute.end > widest.end)
        widest = {tag, attribute.end};
    if (begin < notBefore || reader.readHead(begin, &head) != Fit::Whole || !countsFit(head) ||
        !mayBegin(attribute.identifier, front) || !reader.measuresAsRecord(begin))
        return false;
    FoundRecord found = {};
    if (read(begin, &found) != Fit::Whole || (!known.begins(attribute.identifier) && isRest(found)) ||
        isPartOf(around, found))
        return false;
    found.faultBefore = fault;
    pending = std::move(found);
    return true;
}

// Finds the next record out of step.
bool RecordSearch::searchPending() {
    for (std::int64_t from = at; ask(from);) {
        const std::int64_t until = from + kAskAfter;
        const std::int64_t tag = tags.next(from, until);
        if (tag < 0) {
            if (until >= bytes.size())
                return false;
            from = until;
            continue;
        }
        bytes.passedOver(tag);
        if (!bytes.hasCredit()) {
            from = tag + kSkipped;
            continue;
        }
        if (takeIfRecord(tag))
            return true;
        from = tag + 1;
    }
    return false;
}

// The record behind the last one.
bool RecordSearch::readInStep() {
    FoundRecord found = {};
    pendingInStep = false;
    fault = Fit::Whole;
    if (at >= bytes.size())
        return false;
    bytes.trust();
    const Fit fit = reader.readRecord(at, &found);
    const std::int64_t debt = bytes.settle();
    fault = judged(fit, &found); // what that costs is not on trust
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

// Is what stands there the next record, damaged where it begins?  The attributes that are left of it lead on,
// and it either begins with the first one or its head is left and tells of few more.
bool RecordSearch::isRestOfNext(std::int64_t begin) {
    const std::int64_t end = begin + kLongestGap;
    std::int64_t tag = tags.next(begin, end);
    std::uint32_t left = 0;
    while (tag >= 0 && tag < end && (!leadsOn(tag, &left) || left == 0))
        tag = bytes.pay(kCostOfCandidate) ? tags.next(tag + 1, end) : -1;
    if (tag < 0 || tag >= end || reader.readRecord(tag - reader.headSize(), &trial) == Fit::Whole)
        return false; // nothing tells that it is damaged
    FoundAttribute attribute = {};
    RecordHead head = {};
    if (reader.measureAttribute(tag, &attribute) == Fit::Whole &&
        surveyed(begin).onlyBegins(attribute.identifier))
        return true;
    return reader.readHead(begin, &head) == Fit::Whole && countsFit(head) && left <= head.numAttr &&
           head.numAttr - left <= kLongestGap / kTagSize;
}

// Was nothing written there?  No tag has as many zeros.
bool RecordSearch::isBlank(std::int64_t begin) {
    const std::int64_t size = std::min(bytes.size() - begin, 2 * kTagSize);
    const std::uint8_t *blank = bytes.at(begin, static_cast<std::size_t>(size));
    return blank != nullptr && std::all_of(blank, blank + size, [](std::uint8_t byte) { return byte == 0; });
}

bool RecordSearch::mayEndHere(const FoundRecord &record) {
    if (reader.looksLikeRecord(record.end))
        return true;
    if (record.endIsCertain)
        return !goesOnAsValues(record.end);
    return isBlank(record.end) || isRestOfNext(record.end);
}

// Has a cut taken the last bytes of what looks like a record, so that the first ones of the next one stand in
// their place?
bool RecordSearch::takesFromNext(const FoundRecord &record) {
    if (reader.looksLikeRecord(record.end))
        return false;
    const std::int64_t end = record.end + reader.headSize();
    notBefore = record.lastAttribute + 1;
    for (std::int64_t tag = notBefore + reader.headSize(); bytes.hasCredit(); ++tag) {
        tag = tags.next(tag, end);
        if (tag < 0 || tag >= end)
            break;
        if (takeIfRecord(tag) && pending->end > record.end && known.begins(pending->identifiers.front()))
            return true;
        pending.reset();
    }
    notBefore = record.end;
    return false;
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
        const bool isFollowed = readInStep() || at >= bytes.size();
        const bool endsHere = isFollowed || given.isBeforeRest || mayEndHere(given);
        if (endsHere && (isFollowed || !takesFromNext(given))) {
            if (wasInStep)
                known.learn(given);
            bytes.found(given.end - given.begin);
            return ask(given.end) ? &given : nullptr;
        }
        // It is none; what looked like it may hide another one.
        bytes.pay(givenDebt);
        if (pending)
            continue;
        at = given.begin;
        notBefore = given.begin + 1;
        fault = Fit::Whole;
    }
    return nullptr;
}
