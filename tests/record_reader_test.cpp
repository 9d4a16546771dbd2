// Reading job records: cut, growing and damaged logs, and the format's versions.
#include <gmock/gmock.h>

#include <sys/resource.h>

#include "ala/base/handle.h"
#include "ala/base/record.h"
#include "ala/log/open_log.h"
#include "tests/support/facility.h"

using namespace samples;
using testing::ElementsAre;

static Job smallJob() {
    return Job()
        .attribute("1.2.3", STRING, {packString("abc"), packString("defgh")})
        .attribute("1.2.4", INTEGER)
        .document()
        .attribute("1.2.5", INTEGER, {packInt(7)});
}

// Returns the counts and attributes of a record as a text.
static std::string describe(const record *jobRecord) {
    std::string text = std::to_string(jobRecord->numAttr) + ' ' + std::to_string(jobRecord->numJobAttr) +
                       ' ' + std::to_string(jobRecord->docAttrPerDoc);
    for (std::uint32_t i = 0; i < jobRecord->numAttr; i++) {
        const attrValNode &node = jobRecord->attrValList[i];
        EXPECT_EQ(node.oid, nullptr);
        text += std::string("; ") + node.decoid + ':' + std::to_string(node.attrValType);
        EXPECT_EQ(node.attrVals == nullptr, node.numAttrVal == 0);
        for (std::uint32_t v = 0; v < node.numAttrVal; v++)
            text += ' ' + std::string(reinterpret_cast<const char *>(node.attrVals[v]._value),
                                      static_cast<std::size_t>(node.attrVals[v].length));
    }
    return text;
}

class RecordReader : public Facility {
protected:
    // Return the record as a text, or "code N".  Each call sets line.
    std::string first() { return take(ALA_GetFirstJobRecord); }
    std::string next() { return take(ALA_GetNextJobRecord); }

    std::string line;  // last level 5 entry of the last call but `place`; empty if it logged none
    std::string place; // the entry that names the log and the unreadable record; empty: no such entry

private:
    std::string take(decltype(ALA_GetNextJobRecord) *get) {
        takeLog();
        ALA_record_t got = nullptr;
        const ALA_retCode_t code = get(handle, &log, &got);
        std::vector<std::string> lines = takeLog();
        place.clear();
        if (!lines.empty() && lines.back().find(", date ") != std::string::npos) {
            place = lines.back();
            lines.pop_back();
        }
        line = lines.empty() ? "" : lines.back();
        const std::string text = got != nullptr ? describe(got) : "code " + std::to_string(code);
        EXPECT_EQ(ALA_FreeJobRecord(&got), ALA_N_NORMAL);
        return text;
    }
};

TEST_F(RecordReader, ACutRecordIsReadOnceItIsComplete) {
    for (const std::uint32_t version : {0U, 2U, 3U, 7U}) { // up to version 2, a record has only one count
        Log whole({.verNum = version});
        whole.job(smallJob()).job(smallJob());
        const std::size_t start = whole.records()[1];
        ASSERT_EQ(open(Log(whole).cutTo(start)), ALA_N_NORMAL);
        const std::string expected = first();
        ASSERT_TRUE(expected.starts_with(version <= 2 ? "3 0 0; 1.2.3:14 " : "3 2 1; 1.2.3:14 "));
        for (std::size_t size = start; size < whole.size(); size += 3) {
            SCOPED_TRACE(size - start);
            writeFile(path(), whole.bytes().substr(0, size));
            ASSERT_EQ(next(), size == start ? "code 17" : "code 11");
        }
        writeFile(path(), whole.bytes());
        EXPECT_EQ(next(), expected);
        EXPECT_EQ(next(), "code 17");
        EXPECT_EQ(line, "read failed in ALA_GetNextJobRecord; numAttr = 0 ALA_A_LAST_ATTRIBUTE");
        EXPECT_EQ(place, "") << "a log that ends is not damaged";
        writeFile(path(), whole.job(smallJob()).bytes());
        EXPECT_EQ(next(), expected) << "appended meanwhile";
    }
}

TEST_F(RecordReader, AZeroCountIsReportedUntilOverwritten) {
    Log whole;
    whole.job(smallJob()).job(smallJob());
    ASSERT_EQ(open(Log(whole).overwrite(whole.records()[1], packUint(0))), ALA_N_NORMAL);
    const std::string expected = first();
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(next(), "code 34");
    EXPECT_EQ(line, "numAttr 0 < 0 in ALA_GetNextJobRecord; ALA_A_NO_MORE_JOB");
    writeFile(path(), whole.bytes());
    EXPECT_EQ(next(), expected);
    ASSERT_EQ(open(Log().raw(packUint(0))), ALA_N_NORMAL);
    EXPECT_EQ(first(), "code 34");
    EXPECT_EQ(line, "numAttr < 0 in ALA_GetFirstJobRecord; ALA_A_NO_MORE_JOB");
    EXPECT_TRUE(place.ends_with("alpha.20010203, date 20010203: the record at byte 204 cannot be read after "
                                "byte 208: it has no attributes"))
        << place;
}

TEST_F(RecordReader, AnUnterminatedObjectIdentifierEndsWithItsField) {
    const std::string longest(137, '1');
    ASSERT_EQ(open(Log().job(Job().attribute({.decoid = longest, .attrValType = 0x01010101}, {}))),
              ALA_N_NORMAL);
    EXPECT_EQ(first(), "1 1 0; " + longest.substr(1) + ":16843009");
}

TEST_F(RecordReader, HugeCountsAndLengthsTakeLittleMemory) {
    const Tag huge = {.numAttrVal = 0xFFFFFFFF, .decoid = "1.2"};
    const std::pair<const char *, Job> cases[] = {
        {"attributes", smallJob().numAttr(0xFFFFFFFF)},
        {"values", Job().attribute(huge, {Bytes("x")})},
        {"length 2^31", Job().attribute("1.2", 1, {Value("x", 0x80000000)})},
        {"length 0", Job().attribute("1.2", 1, {Bytes()})},
    };
#ifndef QVLEDGER_SANITIZED
    // Limits the memory, so that an allocation that is much larger than the log fails.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const auto pages = std::stoul(readFile("/proc/self/statm"));
    const rlimit tight = {pages * 4096 + 16 * 1024 * 1024, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
#endif
    for (const auto &[label, job] : cases) {
        ASSERT_EQ(open(Log().job(smallJob()).job(job)), ALA_N_NORMAL);
        EXPECT_TRUE(first().starts_with("3 2 1"));
        EXPECT_EQ(next(), "code 11") << label;
        EXPECT_EQ(next(), "code 11") << label << " again";
    }
    EXPECT_EQ(line, "(0 < 1) || (0 < 1) in ALA_GetNextJobRecord; ALA_A_FAIL_READ_LOG_FILE");
#ifndef QVLEDGER_SANITIZED
    setrlimit(RLIMIT_AS, &before);
#endif
}
