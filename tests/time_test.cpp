// Conversion of a log's times to local time, in zones whose rules are in TZ.
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "ala/base/handle.h"
#include "ala/base/lock.h"
#include "ala/base/owners.h"
#include "ala/render/times.h"
#include "platform/os.h"
#include "samples/output_file.h"
#include "samples/packer.h"
#include "tests/support/temp_dir.h"

using namespace qvledger;

constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";
constexpr char kSydney[] = "AEST-10AEDT,M10.1.0,M4.1.0/3";

class Times : public testing::Test {
protected:
    Times() { ALA__InitMutex(); }
    ~Times() override {
        unsetenv("TZ");
        _tzset();
        THR_TermMutex(&timeLock);
        THR_TermMutex(&localeLock);
    }
    static void setZone(const char *zone) {
        setenv("TZ", zone, 1);
        _tzset();
    }
    static std::string text(const GEN_generalizedTime &time, const char *locale = nullptr) {
        char *ascii = nullptr;
        const std::int32_t result = ALA__GeneralizedTimeToAscii(&time, locale, &ascii);
        const Malloced<char> owner(result == 0 ? ascii : nullptr);
        return result == 0 ? ascii : "(failure)";
    }
};

// In every season the standard offset is added, and mktime() reads the sum as local time.  In summer the
// sum is an hour too early.
TEST_F(Times, UtcIsConvertedInEachZoneAndSeason) {
    const struct {
        const char *label, *zone;
        GEN_generalizedTime utc;
        const char *expected;
    } cases[] = {
        {"Greenwich", "UTC0", {2024, 2, 29, 12, 30, 1, 5, 0, 0}, "02/29/2024 12:30:01"},
        {"east, over new year", kBerlin, {1999, 12, 31, 23, 30, 0, 0, 0, 0}, "01/01/2000 00:30:00"},
        {"west, back over a leap day", kNewYork, {2024, 3, 1, 4, 59, 59, 0, 0, 0}, "02/29/2024 23:59:59"},
        {"summer in the north", kBerlin, {2024, 7, 1, 12, 0, 0, 0, 0, 0}, "07/01/2024 13:00:00"},
        {"summer in the south", kSydney, {2024, 1, 1, 0, 0, 0, 0, 0, 0}, "01/01/2024 10:00:00"},
        {"in spring's gap", kBerlin, {2024, 3, 31, 1, 0, 0, 0, 0, 0}, "03/31/2024 03:00:00"},
        {"in autumn's hour", kBerlin, {2024, 10, 27, 1, 30, 0, 0, 0, 0}, "10/27/2024 02:30:00"},
        {"before 1970", kNewYork, {1955, 1, 1, 4, 0, 0, 0, 0, 0}, "12/31/1954 23:00:00"},
        {"year from 1900", kBerlin, {99, 12, 31, 12, 0, 0, 0, 0, 1}, "12/31/1999 13:00:00"},
        {"mindiff east", "UTC0", {2024, 1, 1, 0, 30, 0, 0, -60, 0}, "12/31/2023 23:30:00"},
        {"fields out of range", "UTC0", {2024, 14, 0, 25, 61, 61, 0, 0, 0}, "02/01/2025 02:02:01"},
        {"year of one digit", "UTC0", {5, 1, 1, 0, 0, 0, 0, 0, 0}, "01/01/0005 00:00:00"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        setZone(c.zone);
        GEN_generalizedTime local = {};
        ASSERT_EQ(ALA__GeneralizedToLocalTime(&c.utc, &local), 0);
        EXPECT_EQ(text(local), c.expected);
        EXPECT_EQ(local.millisec, 0);
        EXPECT_EQ(local.utc, 0);
    }
}

TEST_F(Times, SecondsDoNotDependOnEarlierConversions) {
    using samples::packUint;
    // A zone that changed from UTC+3 to UTC+4 on 27 March 2011 at 02:00, and never changed again.
    const TempDir folder;
    samples::writeFile(folder / "zone", "TZif" + std::string(16 + 12, '\0') + packUint(1) + packUint(2) +
                                            packUint(4) + packUint(1301180400) + '\1' + packUint(10800) +
                                            std::string(2, '\0') + packUint(14400) + std::string(2, '\0') +
                                            "MSK" + '\0');
    const std::string moved = (folder / "zone").string();
    const struct {
        const char *zone;
        GEN_generalizedTime change;
        std::int64_t seconds;
    } cases[] = {
        {kBerlin, {2024, 10, 27, 2, 0, 0, 0, 0, 0}, 1729994400},
        {moved.c_str(), {2011, 3, 26, 22, 30, 0, 0, 0, 0}, 1301182200}}; // 02:30, which this zone skipped
    for (const auto &c : cases)
        for (const std::int16_t month : {std::int16_t{1}, std::int16_t{7}}) {
            setZone(c.zone);
            const GEN_generalizedTime earlier = {c.change.year, month, 1, 12, 0, 0, 0, 0, 0};
            std::int64_t seconds = 0;
            ASSERT_EQ(ALA__ConvertUTCToUnix(&earlier, &seconds), 0);
            ASSERT_EQ(ALA__ConvertUTCToUnix(&c.change, &seconds), 0);
            EXPECT_EQ(seconds, c.seconds) << c.zone << ' ' << month;
        }
}

TEST_F(Times, TimesBefore1970FailAndLateTimesAreConverted) {
    setZone("UTC0");
    std::int64_t seconds = 7;
    const GEN_generalizedTime lastBefore = {1969, 12, 31, 23, 59, 59, 0, 0, 0};
    EXPECT_EQ(ALA__ConvertUTCToUnix(&lastBefore, &seconds), 1) << "-1 means that mktime failed";
    EXPECT_EQ(seconds, -1);
    GEN_generalizedTime local;
    std::memset(&local, 0x55, sizeof local);
    EXPECT_EQ(ALA__GeneralizedToLocalTime(&lastBefore, &local), 1);
    EXPECT_EQ(local.year | local.month | local.day | local.mindiff | local.utc, 0);
    const GEN_generalizedTime after2038 = {2040, 1, 1, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(ALA__ConvertUTCToUnix(&after2038, &seconds), 0);
    EXPECT_EQ(seconds, 2208988800);
    EXPECT_EQ(text(after2038, "no_such_LOCALE"), "01/01/2040 00:00:00");
    EXPECT_EQ(text({12000, 2, 3, 4, 5, 6, 0, 0, 0}, "C.UTF-8"), "02/03/12000 04:05:06");
    EXPECT_STREQ(std::setlocale(LC_TIME, nullptr), "C") << "the process's locale is never changed";
}
