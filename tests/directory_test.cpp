// The log directory: which files are logs, their dates and order, the oldest one, and removal.
#include <fstream>
#include <utility>

#include <gmock/gmock.h>

#include "ala/base/owners.h"
#include "ala/directory/dates.h"
#include "ala/directory/listing.h"
#include "tests/support/facility.h"

using namespace qvledger;

namespace fs = std::filesystem;
using testing::ElementsAre;

class Directory : public Facility {
protected:
    void touch(const std::string &name) const { std::ofstream(root.logs() / name) << "x"; }

    // Returns "year-month-day name" of each log, or "code N" if the listing fails.
    std::vector<std::string> list() {
        dateNode *dates = nullptr;
        ALA_name *names = nullptr;
        const ALA_retCode_t code = ALA_ListExistingLogsByDate(handle, &dates, &names);
        std::vector<std::string> listed;
        if (code != ALA_N_NORMAL)
            listed.push_back("code " + std::to_string(code));
        const ALA_name *name = names;
        for (const dateNode *it = dates; it != nullptr; it = it->next, name = name->next)
            listed.push_back(std::to_string(it->date.year) + '-' + std::to_string(it->date.month) + '-' +
                             std::to_string(it->date.day) + ' ' + name->logName);
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(ALA_FreeDateList(&dates), ALA_N_NORMAL);
        EXPECT_EQ(ALA_FreeNameList(&names), ALA_N_NORMAL);
        return listed;
    }

    std::string oldest() {
        char *name = nullptr;
        std::int32_t date = 0;
        const ALA_retCode_t code = ALA__GetOldestLogName("alpha", root.logs().c_str(), &name, &date);
        const Malloced<char> owned(name);
        return code != ALA_N_NORMAL ? "code " + std::to_string(code) : std::to_string(date) + ' ' + name;
    }
};

TEST_F(Directory, TheTailOfTheNameGivesTheDate) {
    const std::pair<const char *, const char *> cases[] = {
        // A file's name and the log's date; null: the file is not a log of this server.
        {"alpha.20010203", "2001-2-3"},   {"alpha.20019999", "2001-99-99"},
        {"alpha.123", "0-1-23"},          {"alpha.", "0-0-0"},
        {"alpha.abc", "0-0-0"},           {"alpha.-1234567", "-123--45--67"},
        {"alpha.99999999", "9999-99-99"}, {"alpha.Current", "0-0-0"},
        {"alpha.200102031", nullptr},     {"alpha", nullptr},
        {"Alpha.20010203", nullptr},      {"alpha2.20010203", nullptr},
    };
    for (const auto &[name, listed] : cases) {
        touch(name);
        EXPECT_THAT(list(), ElementsAre(listed != nullptr ? std::string(listed) + ' ' + name : "code 29"));
        fs::remove(root.logs() / name);
    }
}

TEST_F(Directory, LogsAreListedOldestFirst) {
    for (const char *tail : {"20010102", "20010303", "19991231", "abc"})
        touch(std::string("alpha.") + tail);
    layCurrentLog();
    EXPECT_THAT(list(), ElementsAre("0-0-0 alpha.abc", "1999-12-31 alpha.19991231", "2001-1-2 alpha.20010102",
                                    "2001-2-3 alpha.current", "2001-3-3 alpha.20010303"));
    EXPECT_EQ(oldest(), "0 alpha.abc");
    for (const char *tail : {"abc", "19991231", "20010102", "20010303"})
        fs::remove(path(tail));
    EXPECT_EQ(oldest(), "20010203 alpha.current");
    setTimeZone("AAA-1");
    EXPECT_EQ(oldest(), "20010204 alpha.current") << "the local date of its last change";
}

TEST_F(Directory, ACurrentLogWithAnImpossibleTimeIsSkipped) {
    touch("alpha.20010102");
    touch("alpha.current");
    std::int64_t changed = 0;
    const Scripted file(script::OS_IdentifyTarget, [&](const char *, OS_fileIdentity *out) {
        out->modifiedSeconds = changed;
        return 0;
    });
    const std::string left =
        path("current").string() + " is skipped: the time of its last change is not a valid date";
    for (const std::int64_t time : {-62135596800, 253402300799}) {
        changed = time;
        EXPECT_EQ(list().size(), 2U) << time;
    }
    for (const std::int64_t time : {-62135596801, 253402300800, 6'776'645'932'800, INT64_MAX}) {
        changed = time;
        EXPECT_EQ(oldest(), "20010102 alpha.20010102");
        EXPECT_THAT(list(), ElementsAre("2001-1-2 alpha.20010102"));
        EXPECT_THAT(takeLog(), ElementsAre(left, left)) << time;
    }
}

TEST_F(Directory, EqualDatesAreOrderedAsByRepeatedInsertion) {
    // The dates of the nodes 0, 1 and so on; the numbers of the nodes in their sorted order.
    const std::pair<std::string, const char *> cases[] = {
        {"111", "021"}, {"12121", "13420"}, {"1223123312", "3769512840"}, {"0123012301", "3762951840"}};
    for (const auto &[dates, expected] : cases) {
        nameNode *head = nullptr;
        for (std::size_t number = dates.size(); number-- > 0;) {
            nameNode *const next = std::exchange(head, makeZeroed<nameNode>().release());
            *head = {_strdup(std::to_string(number).c_str()), dates[number], next};
        }
        ALA__SortList(&head);
        std::string sorted;
        for (const nameNode *node = head; node != nullptr; node = node->next)
            sorted += node->logName;
        ALA__FreeNameNodeList(&head);
        EXPECT_EQ(sorted, expected) << dates;
    }
}

TEST_F(Directory, EachScanHasItsOwnFailureCodes) {
    const std::string oldestLine = "Return code from ALA__GetOldestLogName is ";
    const auto expect = [&](const char *label, ALA_retCode_t oldestCode, const std::string &oldestText,
                            ALA_retCode_t listCode, const std::vector<std::string> &listTexts) {
        SCOPED_TRACE(label);
        takeLog();
        EXPECT_EQ(oldest(), "code " + std::to_string(oldestCode));
        EXPECT_THAT(takeLog(), ElementsAre(oldestText));
        EXPECT_THAT(list(), ElementsAre("code " + std::to_string(listCode)));
        EXPECT_EQ(takeLog(), listTexts);
    };
    const std::string none = "nameList is NULL in ALA_ListExistingLogsByDate; ALA_A_LOG_FILES_NOT_FOUND";
    expect("empty", 23, oldestLine + "ALA_A_FAIL_GET_LOG_NAME_FROM_DIR.", 29, {none});
    fs::create_symlink("nowhere", path("current"));
    expect("vanished current log", 28, "ALA__GetDateFromStat failed in ALA__GetOldestLogName", 29, {none});
    fs::remove_all(root.logs());
    expect("no directory", 27, oldestLine + "ALA_A_FAIL_OPEN_DIR.", 2,
           {"Return code from ALA__GetSortedLogList is ALA_A_INVALID_LOG_PATH_NAME.",
            "ALA__GetSortedLogList failed in ALA_ListExistingLogsByDate"});
}

TEST_F(Directory, DeleteRemovesOnlyDatedLogsOfPastDays) {
    const NextDay itIs;
    for (const char *tail : {"20010203", "20010204", "00330405"})
        touch(std::string("alpha.") + tail);
    layCurrentLog();
    const struct {
        ALA_time date;
        const char *nameTail; // end of the file's name
        ALA_retCode_t code;
        bool remains;
    } cases[] = {
        {{2001, 2, 4}, "20010204", ALA_A_TRY_TO_DELETE_CUR_DAY_LOG, true},
        {{2001, 2, 3}, "20010203", ALA_N_NORMAL, false},
        {{2001, 2, 3}, "current", ALA_A_FAIL_TO_UNLINK, true},
        {{33, 4, 5}, "00330405", ALA_N_NORMAL, false},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(ALA_Delete(handle, &c.date), c.code) << c.nameTail;
        EXPECT_EQ(fs::exists(path(c.nameTail)), c.remains) << c.nameTail;
    }
    EXPECT_EQ(ALA_Delete(handle, nullptr), ALA_A_INVALID_ARG);
    EXPECT_THAT(takeLog(),
                ElementsAre("Trying to delete current day's file, year: 2001, month: 2, day: 4in ALA_Delete; "
                            "ALA_A_TRY_TO_DELETE_CUR_DAY_LOG",
                            "Failed to unlink file in ALA_Delete; ALA_A_FAIL_TO_UNLINK",
                            "inp_date is NULL in ALA_Delete; ALA_A_INVALID_ARG"));
}
