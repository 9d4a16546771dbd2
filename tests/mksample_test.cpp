// mksample: the options that say whom the logs admit, what they contain and how they are damaged.
#include <gtest/gtest.h>

#include "samples/callers_account.h"
#include "tests/support/run_tool.h"

using namespace samples;

static const ToolRun kMksample{.program = MKSAMPLE_BINARY};

// Creates a sample of four logs, from June 7 to the current day, June 10.  Returns what qvledger-check prints
// about them.
static std::string checkedLogs(std::vector<std::string> options) {
    PrintSystem system;
    options.insert(options.begin(),
                   {system.root.path(), "--today", "19990610", "--days", "3", "--jobs", "4"});
    const ToolResult made = system.run(options, kMksample);
    EXPECT_EQ(made.status, 0) << made.err;
    const std::string checked = system.run({"alpha"}, {.program = QVLEDGER_CHECK_BINARY}).out;
    return checked.substr(checked.find("server\tlog\t"));
}

static std::size_t count(const std::string &text, const std::string &part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        found++;
    return found;
}

TEST(Mksample, LogsAdmitTheNamedUsersAndGroups) {
    const Account caller = callersAccount();
    const std::string admitted = "\tyes\t";
    EXPECT_EQ(count(checkedLogs({}), admitted), 3); // one log admits nobody
    EXPECT_EQ(count(checkedLogs({"--user", "auditor", "--user", caller.user.name}), admitted), 4);
    EXPECT_EQ(count(checkedLogs({"--group", caller.groups.at(0).name}), admitted), 4);
    EXPECT_EQ(count(checkedLogs({"--user", "auditor", "--group", "auditors"}), admitted), 0);
    EXPECT_EQ(count(checkedLogs({"--user", "OTHER\\" + caller.user.name}), admitted), 0);
}

TEST(Mksample, WritesOldVersionsAndDamagedLogs) {
    const std::string user = callersAccount().user.name;
    for (const std::string version : {"1", "2", "3"}) {
        const std::string logs = checkedLogs({"--user", user, "--log-version", version});
        EXPECT_EQ(count(logs, "\t" + version + (version == "1" ? "\t\t" : "\t1999-06-")), 4) << logs;
        EXPECT_EQ(count(logs, "\twhole\t"), 4) << logs;
    }
    const std::string damaged = checkedLogs({"--user", user, "--cut", "--zeros"});
    EXPECT_EQ(count(damaged, "\twhole\t"), 2);
    EXPECT_LT(damaged.find("alpha.19990607"), damaged.find("\tdamaged\t"));
    EXPECT_LT(damaged.find("\tdamaged\t"), damaged.find("alpha.19990608"));
    EXPECT_LT(damaged.find("alpha.19990609"), damaged.find("\tcut\t"));
    EXPECT_LT(damaged.find("\tcut\t"), damaged.find("alpha.current"));
}

TEST(Mksample, EveryNthJobFails) {
    PrintSystem system;
    system.run({system.root.path(), "--today", "19990610", "--days", "0", "--jobs", "7", "--failed", "3"},
               kMksample);
    const ToolResult sums =
        system.run({"-b", "job-state,day", "-f", "tsv", "alpha"}, {.program = QVLEDGER_SUM_BINARY});
    EXPECT_NE(sums.out.find("aborted\t1999-06-10\t2\t"), sums.out.npos) << sums.out;
    EXPECT_NE(sums.out.find("completed\t1999-06-10\t5\t"), sums.out.npos) << sums.out;
}

TEST(Mksample, RefusesInvalidArgumentsAndWritesNothing) {
    struct Case {
        std::vector<std::string> options;
        const char *err;
    };
    for (const Case &c : {
             Case{{"--jobs", "1000001"}, "--jobs accepts a number from 0 to 1000000, not \"1000001\""},
             {{"--days", "-1"}, "--days accepts a number from 0 to 3650, not \"-1\""},
             {{"--log-version"}, "--log-version accepts a number from 1 to 3, not \"\""},
             {{"--failed", "0"}, "--failed accepts a number from 1 to 1000000, not \"0\""},
             {{"--today", "19990229"}, "--today accepts a date from 19700101 to today, not \"19990229\""},
             {{"--today", "99991231"}, "--today accepts a date from 19700101 to today, not \"99991231\""},
             {{"--user", ""}, "--user accepts a name without control characters, not \"\""},
             {{"--admit", "anna"}, "unknown option: --admit; mksample --help lists the options"},
             {{"other"}, "one directory is needed, not also \"other\""},
             {{"--days", "0", "--cut"}, "--cut and --zeros damage logs of past days, but --days is 0"},
         }) {
        PrintSystem system;
        std::vector<std::string> arguments = {system / "new"};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const ToolResult result = system.run(arguments, kMksample);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, std::string("mksample: ") + c.err + '\n');
        EXPECT_FALSE(std::filesystem::exists(system / "new"));
    }
}
