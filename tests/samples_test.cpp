// The writer of the logs that other tests read: its layout against bytes written out here, and its failures.
#include <gtest/gtest.h>

#include <system_error>

#include "samples/log_writer.h"
#include "samples/sample_jobs.h"

using namespace samples;

TEST(Samples, PackedFormsAreTheseBytes) {
    const struct {
        const char *label;
        Bytes packed;
        Bytes expected;
    } cases[] = {
        {"string with fill", packString("A4 ab"), Bytes("\0\0\0\5A4 ab\0\0\0", 12)},
        {"negative", packInt(-2), "\xff\xff\xff\xfe"},
        {"real", packDouble(1.5), Bytes("\x3f\xf8\0\0\0\0\0\0", 8)},
        {"high word first", packCardinal64(0x100000002), Bytes("\0\0\0\1\0\0\0\2", 8)},
        {"member of a union", pack(oid(42)), Bytes("\0\0\0\1\0\0\0\52", 8)},
        {"no member", pack(Text{9, ""}), Bytes("\0\0\0\11", 4)},
        {"chain with a missing element", pack(ObjectIdents{std::nullopt, objectOid(7)}),
         Bytes("\0\0\0\1\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\3\0\0\0\7\0\0\0\0", 28)},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.packed, c.expected) << c.label;
}

TEST(Samples, RecordStatesItsCounts) {
    Log log({.createDate = 7});
    log.job(Job().attribute("1.2.3", STRING).document().attribute("1.2.4", INTEGER, {packInt(5)}).document());
    const std::size_t header = 12 + TAG_SIZE + 4 + pack(anyUserEntry()).size();
    ASSERT_EQ(log.records(), std::vector<std::size_t>{header});
    EXPECT_EQ(log.bytes().substr(0, 12), Bytes("\0\0\0\3\0\0\0\7\0\0\0\1", 12));
    EXPECT_EQ(log.bytes().substr(header, 12), Bytes("\0\0\0\2\0\0\0\1\0\0\0\1", 12));
    EXPECT_EQ(log.size(), header + 12 + 2 * TAG_SIZE + 4 + 4);
}

TEST(Samples, FullDiskIsReported) {
    LogWriter log("/dev/full");
    EXPECT_THROW(log.job(Job()).close(), std::system_error);
}

TEST(Samples, DemoJobsOfBothKindsFindTheirNames) {
    for (const JobKind kind : {JobKind::OFFICE, JobKind::ORDER})
        for (std::uint64_t number = 1; number <= 50; number++) {
            Job job;
            EXPECT_NO_THROW(makeJob({"alpha", {}, 1, 50}, number, kind, job)) << number;
        }
}
