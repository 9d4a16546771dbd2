#include "ala/repair/known_identifiers.h"

#include "ala/repair/tag_scan.h"

using namespace qvledger;

constexpr std::size_t kLearned = 4096; // attributes, and counts of them
constexpr std::size_t kTails = 1 << 16;
constexpr std::int64_t kSurveyCredit = 16 << 20;  // what may be looked at in vain, as LogBytes::pay counts
constexpr std::int64_t kAskAfter = 1 << 20;       // bytes
constexpr std::int64_t kLongestInVain = 64 << 20; // bytes without two records in step
constexpr std::int64_t kCostOfCandidate = 336;    // in bytes passed over
constexpr std::int64_t kSkipped = 4096;           // bytes at a time, where the credit is used up

static bool hasAll(const FoundRecord &record) {
    return record.identifiers.size() == record.head.numAttr;
}

static std::uint64_t mixed(std::uint64_t tail, std::uint64_t identifier) {
    return (tail ^ identifier) * 0x9e3779b97f4a7c15U + 1;
}

void KnownIdentifiers::learn(const FoundRecord &record) {
    if (first.size() < kLearned)
        first.insert(record.identifiers.front());
    for (std::size_t i = 1; i < record.identifiers.size() && later.size() < kLearned; ++i)
        later.insert(record.identifiers[i]);
    if (perDocument.size() < kLearned)
        perDocument.insert(record.head.docAttrPerDoc);
    std::uint64_t tail = 0;
    for (std::size_t i = record.identifiers.size(); hasAll(record) && i > 1 && tails.size() < kTails; --i) {
        tail = mixed(tail, record.identifiers[i - 1]);
        tails.insert(tail);
    }
}

bool KnownIdentifiers::endsLike(const FoundRecord &record, std::size_t without) const {
    std::uint64_t tail = 0;
    for (std::size_t i = record.identifiers.size(); i > without; --i)
        tail = mixed(tail, record.identifiers[i - 1]);
    return hasAll(record) && tails.contains(tail);
}

namespace {

class Survey {
public:
    Survey(const LogBytes &log, std::uint32_t verNum, std::int64_t begin, SearchWatch &givenWatch,
           KnownIdentifiers &givenKnown)
        : bytes(log.again(begin, kSurveyCredit)), reader(bytes, verNum), tags(bytes), watch(givenWatch),
          known(givenKnown) {}

    bool run(std::int64_t begin) {
        std::int64_t ofLastRun = begin;
        std::int64_t asked = begin;
        for (std::int64_t from = begin;;) {
            if (from - asked >= kAskAfter && !watch.goOn(begin))
                return false;
            asked = from - asked >= kAskAfter ? from : asked;
            const std::int64_t tag = tags.next(from, ofLastRun + kLongestInVain);
            if (tag < 0 || tag - ofLastRun > kLongestInVain)
                return true;
            bytes.passedOver(tag);
            const std::int64_t end = bytes.hasCredit() ? endOfRun(tag) : tag + kSkipped;
            if (bytes.hasCredit() && end > tag + 1)
                ofLastRun = end;
            from = end;
        }
    }

private:
    // Behind the records in step of which the first one has its first tag there.
    std::int64_t endOfRun(std::int64_t tag) {
        const std::int64_t begin = tag - reader.headSize();
        FoundAttribute attribute = {};
        RecordHead head = {};
        if (!bytes.pay(kCostOfCandidate) || reader.readHead(begin, &head) != Fit::Whole ||
            reader.measureAttribute(tag, &attribute) != Fit::Whole || !reader.measuresAsRecord(begin) ||
            reader.readRecord(begin, &record) != Fit::Whole)
            return tag + 1;
        std::int64_t behind = tag + 1;
        while (isInStep(record.end)) {
            known.learn(record);
            behind = record.end;
            bytes.found(record.end - record.begin);
        }
        return behind;
    }

    bool isInStep(std::int64_t begin) {
        bytes.trust();
        const bool is = begin < bytes.size() && reader.readRecord(begin, &record) == Fit::Whole;
        const std::int64_t debt = bytes.settle();
        if (!is)
            bytes.pay(debt);
        return is;
    }

    LogBytes bytes;
    RecordReader reader;
    TagScan tags;
    SearchWatch &watch;
    KnownIdentifiers &known;
    FoundRecord record = {};
};

} // namespace

bool qvledger::survey(const LogBytes &log, std::uint32_t verNum, std::int64_t begin, SearchWatch &watch,
                      KnownIdentifiers &known) {
    return Survey(log, verNum, begin, watch, known).run(begin);
}
