// Damaged logs: what the damage did not touch is found again, and nothing is found that was not there.
//
// `make damage` damages LOGS logs of 200 records, whose numbers are the seeds of their choices, in one to
// three regions of 1 to 4,096 bytes each, which are overwritten, cut out, zeroed or inserted; and it tries
// each prefix and each flipped bit of three small logs.  It also counts what is found in LOGS logs of many
// shapes (damage_shapes.h).  Without QVLEDGER_DAMAGED_LOGS all that is a sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <numeric>

#include <sys/mman.h>
#include <unistd.h>

#include "ala/repair/search.h"
#include "samples/sample_jobs.h"
#include "tests/damage_shapes.h"

using namespace qvledger;
using namespace samples;

struct Counts {
    long logs = 0, records = 0, untouched = 0, saved = 0, joined = 0, taken = 0;
};

static Original makeOriginal(std::uint32_t version, unsigned seed, std::uint64_t jobs) {
    const LogHeader header{.verNum = version, .createDate = 1000000000};
    Original original{Log(header), version, Log(header).size()};
    Day day = {};
    day.server = "alpha";
    day.date.tm_year = 101;
    day.date.tm_mday = 3;
    day.seed = seed;
    day.jobs = jobs;
    Job job;
    for (std::uint64_t i = 1; i <= jobs; ++i) {
        makeJob(day, i, (i + seed) % 3 == 0 ? JobKind::ORDER : JobKind::OFFICE, job);
        original.log.job(job);
    }
    return original;
}

static Damaged undamaged(const Original &original) {
    Damaged damaged{original.log.bytes(), {}, std::vector<bool>(original.log.size())};
    for (std::size_t i = 0; i < damaged.bytes.size(); ++i)
        damaged.origins.push_back(static_cast<std::int64_t>(i));
    return damaged;
}

static void damageRegion(Damaged &log, std::size_t headerEnd, Random &random) {
    const std::size_t at = headerEnd + pick(random, log.bytes.size() - headerEnd);
    const std::size_t most = pick(random, 4) == 0 ? 16 : 4096;
    const std::size_t size = std::min(1 + pick(random, most), log.bytes.size() - at);
    const std::size_t kind = pick(random, 4);
    const auto place = static_cast<std::ptrdiff_t>(at);
    const auto end = place + static_cast<std::ptrdiff_t>(size);
    if (kind == 3) { // between two bytes, which stay as they are
        std::string noise(size, '\0');
        std::ranges::generate(noise, [&] { return static_cast<char>(pick(random, 256)); });
        log.bytes.insert(at, noise);
        log.origins.insert(log.origins.begin() + place, size, kNew);
        return;
    }
    for (std::size_t i = at; i < at + size; ++i) {
        if (log.origins[i] != kNew)
            log.touched[static_cast<std::size_t>(log.origins[i])] = true;
        log.bytes[i] = kind == 0 ? static_cast<char>(pick(random, 256)) : '\0';
    }
    if (kind == 1) {
        log.bytes.erase(at, size);
        log.origins.erase(log.origins.begin() + place, log.origins.begin() + end);
    }
}

namespace {

class NoWatch final : public SearchWatch {
    bool goOn(std::int64_t) override { return true; }
};

struct Piece {
    std::size_t begin, end;
};

} // namespace

static std::vector<Piece> search(const std::string &givenBytes, const Original &original) {
    static const int file = memfd_create("log", 0);
    if (ftruncate(file, 0) != 0 ||
        pwrite(file, givenBytes.data(), givenBytes.size(), 0) != static_cast<ssize_t>(givenBytes.size()))
        std::abort();
    LogBytes bytes(file, static_cast<std::int64_t>(givenBytes.size()));
    NoWatch watch;
    RecordSearch records(bytes, original.version, static_cast<std::int64_t>(original.headerEnd), watch);
    std::vector<Piece> found;
    while (const FoundRecord *record = records.next())
        found.push_back({static_cast<std::size_t>(record->begin), static_cast<std::size_t>(record->end)});
    return found;
}

enum class Likeness { Same, Joined, None };

static bool endsAsOneDid(const Damaged &log, const Piece &piece, const Original &original) {
    const auto behind = static_cast<std::size_t>(log.origins[piece.end - 1] + 1);
    return behind == original.log.size() || std::ranges::binary_search(original.log.records(), behind);
}

// Is that the original record, but for damaged bytes?  Behind a cut others may have come in the place of its
// last ones, so that what stands there is a value, or the rest of a record, like any other.
static Likeness likeness(const Damaged &log, const Piece &piece, const Original &original,
                         std::size_t record) {
    const std::size_t begin = original.log.records()[record];
    const std::size_t size = original.endOf(record) - begin;
    Likeness found = Likeness::Same;
    for (std::size_t i = 0; i < piece.end - piece.begin; ++i) {
        const std::int64_t origin = log.origins[piece.begin + i];
        if (i < size && log.bytes[piece.begin + i] == original.log.bytes()[begin + i])
            continue;
        if (origin != kNew && origin != static_cast<std::int64_t>(begin + i))
            found = Likeness::Joined;
        if (i < size && origin == kNew)
            continue;
        if (i < size && !log.touched[begin + i])
            return Likeness::None;
    }
    if (piece.end - piece.begin == size)
        return found;
    // The rest of another record, to its end.
    return found == Likeness::Joined && endsAsOneDid(log, piece, original) ? found : Likeness::None;
}

// The bytes of an original record whose own first ones are gone, where like ones have come in their place.
static bool isLikeOneBehind(const Damaged &log, const Piece &piece, const Original &original) {
    const std::size_t size = piece.end - piece.begin;
    const auto behind = static_cast<std::size_t>(log.origins[piece.end - 1] + 1);
    return behind >= size && std::ranges::binary_search(original.log.records(), behind - size) &&
           log.bytes.compare(piece.begin, size, original.log.bytes(), behind - size, size) == 0;
}

// A server could have written that record as it is, and then it would have to be found.  So it has to be
// found here, whatever it was made from: the bytes are the same, and no reader can tell.
static bool isWholeAlone(const Damaged &log, const Piece &piece, const Original &original) {
    const std::size_t size = piece.end - piece.begin;
    const std::vector<Piece> found = search(
        original.log.bytes().substr(0, original.headerEnd) + log.bytes.substr(piece.begin, size), original);
    return found.size() == 1 && found[0].begin == original.headerEnd && found[0].end - found[0].begin == size;
}

static void judge(const Damaged &log, const Original &original, const std::string &label, Counts &counts) {
    const std::vector<Piece> found = search(log.bytes, original);
    const auto &starts = original.log.records();
    std::vector<bool> seen(starts.size());
    std::vector<Piece> joined;
    ++counts.logs;
    counts.saved += static_cast<long>(found.size());
    for (const Piece &piece : found) {
        const std::int64_t origin = log.origins[piece.begin];
        const auto record = static_cast<std::size_t>(
            std::ranges::lower_bound(starts, static_cast<std::size_t>(std::max<std::int64_t>(origin, 0))) -
            starts.begin());
        const bool begins =
            origin != kNew && record < starts.size() && starts[record] == static_cast<std::size_t>(origin);
        const Likeness like = begins ? likeness(log, piece, original, record) : Likeness::None;
        if (like == Likeness::Same) {
            seen[record] = true;
        } else if ((like == Likeness::Joined || isLikeOneBehind(log, piece, original) ||
                    (begins && endsAsOneDid(log, piece, original))) && // joined within itself, or with others
                   isWholeAlone(log, piece, original)) {
            ++counts.joined;
            joined.push_back(piece);
        } else {
            ADD_FAILURE() << label << ": none of the records stands from " << piece.begin << " to "
                          << piece.end << ", which were at " << origin << " to "
                          << log.origins[piece.end - 1];
        }
    }
    // An insertion inside a record touches it, too: its bytes do not stand together any more.
    std::vector<std::size_t> places(original.log.size(), log.bytes.size());
    for (std::size_t i = 0; i < log.origins.size(); ++i)
        if (log.origins[i] != kNew)
            places[static_cast<std::size_t>(log.origins[i])] = i;
    for (std::size_t record = 0; record < starts.size(); ++record) {
        const std::size_t begin = starts[record], end = original.endOf(record);
        ++counts.records;
        if (std::any_of(log.touched.begin() + static_cast<std::ptrdiff_t>(begin),
                        log.touched.begin() + static_cast<std::ptrdiff_t>(end),
                        [](bool touched) { return touched; }) ||
            places[end - 1] - places[begin] != end - 1 - begin)
            continue;
        ++counts.untouched;
        if (seen[record])
            continue;
        if (std::ranges::any_of(joined, [at = places[begin]](const Piece &piece) {
                return piece.begin <= at && at < piece.end;
            })) {
            ++counts.taken; // its first bytes are the end of another one
            continue;
        }
        ADD_FAILURE() << label << ": record " << record << ", at " << places[begin] << ", is lost";
    }
}

static void tell(const Counts &counts) {
    std::printf("%ld logs, %ld of %ld records untouched, %ld saved; with an end from "
                "behind a cut %ld, without their beginning by it %ld\n",
                counts.logs, counts.untouched, counts.records, counts.saved, counts.joined, counts.taken);
}

static unsigned wantedLogs() {
    const char *wanted = std::getenv("QVLEDGER_DAMAGED_LOGS");
    return wanted != nullptr ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 0;
}

TEST(Damage, WhatRegionsOfDamageDoNotTouchIsFoundAgain) {
    Counts counts;
    std::vector<unsigned> seeds(wantedLogs() != 0 ? wantedLogs() : 60);
    std::iota(seeds.begin(), seeds.end(), 1U);
    if (wantedLogs() == 0)
        seeds.insert(seeds.end(), {3476, 4136, 9764}); // hard ones
    for (const unsigned seed : seeds) {
        Random random(seed);
        const Original original = makeOriginal(1 + seed % 3, seed, 200);
        Damaged log = undamaged(original);
        for (std::size_t regions = 1 + pick(random, 3); regions > 0; --regions)
            damageRegion(log, original.headerEnd, random);
        judge(log, original, "log " + std::to_string(seed), counts);
    }
    tell(counts);
}

// What a piece is called that is not an untouched record.  One that begins where a record did, is as long and
// would be a record alone has changed bytes that no reader can notice.
static const char *nameOf(const Piece &piece, const ShapedLog &shaped) {
    const Original &original = shaped.original;
    const auto &starts = original.log.records();
    const auto origin = static_cast<std::size_t>(shaped.damaged.origins[piece.begin]);
    const auto start = std::ranges::lower_bound(starts, origin);
    const bool begins = start != starts.end() && *start == origin;
    const bool hasSize =
        begins &&
        original.endOf(static_cast<std::size_t>(start - starts.begin())) - origin == piece.end - piece.begin;
    if (shaped.kind == "cut")
        return "forged";
    if ((hasSize || (begins && endsAsOneDid(shaped.damaged, piece, original)) ||
         isLikeOneBehind(shaped.damaged, piece, original)) &&
        isWholeAlone(shaped.damaged, piece, original))
        return hasSize ? "changed" : "joined";
    return "wrong";
}

// Does it have the bytes of an original record?  Then most likely a text contained it.
static bool isCopied(const Piece &piece, const ShapedLog &shaped) {
    const Original &original = shaped.original;
    const std::string bytes = shaped.damaged.bytes.substr(piece.begin, piece.end - piece.begin);
    return std::ranges::any_of(original.log.records(), [&](const std::size_t &begin) {
        const auto record = static_cast<std::size_t>(&begin - original.log.records().data());
        return original.log.bytes().compare(begin, original.endOf(record) - begin, bytes) == 0;
    });
}

// Counts of each group of logs, by which two searches are compared.
using Tally = std::map<std::string, std::map<std::string, long>>;

static void judgeShaped(unsigned number, Tally &tally) {
    const ShapedLog shaped = makeShapedLog(number);
    const Original &original = shaped.original;
    const Damaged &log = shaped.damaged;
    const std::string version = "version " + std::to_string(original.version);
    const auto count = [&](const std::string &what, const Piece &piece = {}) {
        for (const std::string &group : {std::string("all"), version, shaped.kind})
            ++tally[group][what];
        if (wantedLogs() != 0 && (what == "lost" || what == "wrong" || what == "forged") &&
            tally["all"][what] <= 40)
            std::printf("%s: log %u, %zu to %zu, once at %ld; %s%s\n", what.c_str(), number, piece.begin,
                        piece.end, static_cast<long>(log.origins[piece.begin]), version.c_str(),
                        shaped.damages.c_str());
    };
    count("logs");
    std::vector<std::size_t> places(original.log.size(), log.bytes.size());
    for (std::size_t i = 0; i < log.origins.size(); ++i)
        if (log.origins[i] != kNew)
            places[static_cast<std::size_t>(log.origins[i])] = i;
    std::map<std::size_t, std::size_t> missing; // beginnings and ends of untouched records
    for (std::size_t record = 0; record < original.log.records().size(); ++record) {
        const std::size_t begin = original.log.records()[record], size = original.endOf(record) - begin;
        count("records");
        if (log.bytes.compare(places[begin], size, original.log.bytes(), begin, size) != 0)
            continue;
        count("untouched");
        missing[places[begin]] = places[begin] + size;
    }
    std::vector<Piece> excused;
    for (const Piece &piece : search(log.bytes, original)) {
        const auto at = missing.find(piece.begin);
        if (at != missing.end() && at->second == piece.end) {
            missing.erase(at);
            continue;
        }
        const std::string is = nameOf(piece, shaped);
        count(is, piece);
        if (is == "joined" || is == "changed")
            excused.push_back(piece);
        else if (isCopied(piece, shaped))
            count("copied");
    }
    for (const auto &[begin, end] : missing)
        count(std::ranges::any_of(excused,
                                  [at = begin](const Piece &by) { return by.begin <= at && at < by.end; })
                  ? "taken"
                  : "lost",
              {begin, end});
}

TEST(Damage, LogsOfManyShapesLoseFewRecords) {
    Tally tally;
    for (unsigned number = 1; number <= (wantedLogs() != 0 ? wantedLogs() : 40); ++number)
        judgeShaped(number, tally);
    for (auto &[group, counts] : tally) {
        std::printf("%-15s", group.c_str());
        for (const char *what : {"logs", "records", "untouched", "lost", "wrong", "forged", "copied",
                                 "joined", "changed", "taken"})
            std::printf(" %s %ld", what, counts[what]);
        std::printf("\n");
    }
    if (wantedLogs() != 0)
        return; // the numbers are compared to those of another search
    EXPECT_GT(tally["all"]["untouched"], 6000);
    EXPECT_LE(tally["all"]["lost"] + tally["all"]["wrong"], 4); // two of each, when this was written
    EXPECT_EQ(tally["all"]["forged"], 0);
}

// The step is odd, so that the sample has each bit of a byte.
static const std::size_t kStep = wantedLogs() != 0 ? 1 : 601;

// Damages three small logs at each place, which is a byte or a bit.
static void judgeEach(std::size_t perByte, const std::function<void(Damaged &, std::size_t)> &damage) {
    Counts counts;
    for (const std::uint32_t version : {1U, 2U, 3U}) {
        const Original original = makeOriginal(version, version, 3);
        for (std::size_t at = perByte * original.headerEnd; at < perByte * original.log.size(); at += kStep) {
            Damaged log = undamaged(original);
            damage(log, at);
            judge(log, original, std::to_string(version) + ": at " + std::to_string(at), counts);
        }
    }
    tell(counts);
}

TEST(Damage, EachPrefixHasItsRecords) {
    judgeEach(1, [](Damaged &log, std::size_t size) {
        log.bytes.resize(size);
        log.origins.resize(size);
        std::fill(log.touched.begin() + static_cast<std::ptrdiff_t>(size), log.touched.end(), true);
    });
}

TEST(Damage, AFlippedBitCostsOneRecordAtMost) {
    judgeEach(8, [](Damaged &log, std::size_t bit) {
        log.bytes[bit / 8] = static_cast<char>(log.bytes[bit / 8] ^ 1 << bit % 8);
        log.touched[bit / 8] = true;
    });
}

// Each fourth byte begins a tag whose values lead through the whole log.
TEST(Damage, BytesMadeToCostMuchCostLittleAndHideFewRecordsBehindThem) {
    const Original original = makeOriginal(3, 1, 200);
    std::string bytes = original.log.bytes().substr(0, original.headerEnd);
    while (bytes.size() < 32 << 20)
        bytes.append("0.5", 4);
    bytes += original.log.bytes().substr(original.headerEnd);
    const std::clock_t begin = std::clock();
    const std::vector<Piece> found = search(bytes, original);
    EXPECT_LT(std::clock() - begin, 10 * CLOCKS_PER_SEC);
    EXPECT_GT(found.size(), 150U);
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_EQ(bytes.size() - found[found.size() - 1 - i].begin,
                  original.log.size() - original.log.records()[199 - i]);
}

TEST(Damage, ASoundRecordIsFoundHoweverMuchItTakesToReadIt) {
    Original original = makeOriginal(3, 1, 3);
    std::string record("\0\0\0\1\0\0\0\1\0\0\0", 12);
    attrTag tag = {};
    tag.numAttrVal = 2'500'000;
    std::copy_n("1.3.6", 6, tag.decoid);
    tag.attrValType = 1; // integers
    record.append(reinterpret_cast<const char *>(&tag), sizeof tag);
    for (std::uint32_t i = 0; i < tag.numAttrVal; ++i)
        record.append("\4\0\0\0\0\0\0\1", 8);
    std::string bytes = original.log.bytes();
    bytes.insert(original.log.records()[1], record);
    EXPECT_EQ(search(bytes, original).size(), 4U);
}

// Records of a few attributes, each of one value, by the last arc of their identifiers.
static std::string recordOf(std::uint32_t version, const std::vector<int> &arcs, std::string_view value,
                            std::uint32_t type = 999) {
    std::string bytes("\0\0\0", 3);
    bytes += static_cast<char>(arcs.size());
    if (version >= 3)
        bytes += bytes + std::string(4, '\0');
    for (const int arc : arcs) {
        attrTag tag = {1, 0, "1.3.6.1.", "", type};
        tag.decoid[8] = static_cast<char>('0' + arc);
        bytes.append(reinterpret_cast<const char *>(&tag), sizeof tag);
        const auto size = static_cast<std::uint32_t>(value.size());
        bytes.append(reinterpret_cast<const char *>(&size), sizeof size).append(value);
    }
    return bytes;
}

TEST(Damage, WhatRecordsBeginWithTellsThemFromTheRestOfOne) {
    for (const std::uint32_t version : {1U, 3U}) {
        SCOPED_TRACE(version);
        const Original empty = makeOriginal(version, 1, 0);
        const std::string header = empty.log.bytes(), noise(20, '\xff');
        const std::string one = recordOf(version, {1, 2, 3}, "abc"),
                          other = recordOf(version, {4, 1, 3}, "x");
        const std::string rest = recordOf(version, {5, 6}, std::string("\0\0\0\1\0\0\0\1\0\0\0", 12));
        const std::string ofOneWord = recordOf(version, {5, 6}, std::string("\0\0\0\1", 4));
        const std::string &tricky = version >= 3 ? rest : ofOneWord;
        const auto found = [&](const std::string &records) { return search(header + records, empty).size(); };
        const std::size_t head = version >= 3 ? 12 : 4;
        EXPECT_EQ(found(noise + one + one + other + other), 4U);
        const std::size_t known = version >= 3 ? 4 : 3; // where three words fit and no record ends like it
        EXPECT_EQ(found(noise + one + other + other + other), known);
        EXPECT_EQ(found(other + other + other + noise + one + one + one), 5U) << "1 stands behind 4, too";
        EXPECT_EQ(found(noise + tricky.substr(20) + tricky + tricky), 2U) << "the rest of a record";
        if (version == 1) {
            EXPECT_EQ(found(tricky.substr(20) + noise), 0U) << "nothing is known";
        }
        EXPECT_EQ(found(one + one + one.substr(head) + one), 3U) << "a head is gone";
        // The last value does not tell where it ends.
        std::string dented = one;
        dented[head + 8] = '\xff';
        EXPECT_EQ(found(one + one + dented + one), 3U) << "the head is left";
        EXPECT_EQ(found(one + one + noise + dented.substr(head) + one), 2U) << "it may have been longer";
        EXPECT_EQ(found(one + one + std::string(400, '\0')), 2U) << "nothing was written";
        EXPECT_EQ(found(one + one + noise), 1U);
    }
}

// Any user can choose a text.
TEST(Damage, WhatLooksLikeARecordInATextIsNone) {
    for (const std::uint32_t version : {1U, 3U}) {
        SCOPED_TRACE(version);
        const Original empty = makeOriginal(version, 1, 0);
        const std::string forged = recordOf(version, {1}, "abcd"), one = recordOf(version, {1, 2}, "abcd");
        std::string text("\0\0\0\4\0\0\0", 7); // in UCS-2
        text += static_cast<char>(forged.size());
        text += forged;
        const std::string host = recordOf(version, {1, 2}, text, 16);
        const auto found = [&](const std::string &records) {
            return search(empty.log.bytes() + records, empty).size();
        };
        EXPECT_EQ(found(one + one + host), 3U);
        EXPECT_EQ(found(one + one + host + one.substr(0, 100)), 3U) << "the log is cut";
        EXPECT_EQ(found(one + one + "\xff" + host.substr(1) + one), 3U) << "its head is destroyed";
    }
}

// As many attributes behind a record as there are look like the rest of the next one.
TEST(Damage, AttributesThatLeadThroughTheWholeLogCostLittle) {
    const Original empty = makeOriginal(3, 1, 0);
    const std::string one = recordOf(3, {1, 2}, "abcd");
    std::string records = one + one + one;
    const std::string pair = recordOf(3, {5}, one + one).substr(12);
    while (records.size() < 8 << 20)
        records += pair;
    const std::clock_t begin = std::clock();
    EXPECT_GE(search(empty.log.bytes() + records + std::string(40, '\xff'), empty).size(), 2U);
    EXPECT_LT(std::clock() - begin, 4 * CLOCKS_PER_SEC);
}
