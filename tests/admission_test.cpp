#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "samples/callers_account.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static int statusFor(const AccessEntry &entry) {
    PrintSystem system;
    system.save("19990301", marchLog({.accessList = {pack(entry)}}));
    return system.run({"alpha"}).status;
}

TEST(Admission, AnEntryAdmitsTheCallersUser) {
    const AccountName user = callersAccount().user;
    EXPECT_EQ(statusFor(userEntry(user.name, user.domain)), 0);
    EXPECT_EQ(statusFor(userEntry(user.name, "ELSEWHERE")), 7);
}

TEST(Admission, AnEntryAdmitsTheCallersGroup) {
    const Account caller = callersAccount();
    if (caller.groups.empty() || caller.groupIds > 15)
        GTEST_SKIP() << "the caller is in no group with a name, or in too many groups";
    EXPECT_EQ(statusFor(groupEntry(caller.groups[0].name, caller.groups[0].domain)), 0);
}

TEST(Admission, AccountsAndGroupsBelongToTheDomainInTheirName) {
    PrintSystem system;
    fs::create_directory(system / "etc");
    writeFile(system / "etc/passwd", "CORP\\alice:x:0:0::/:/bin/sh\n");
    writeFile(system / "etc/group", "CORP\\print:x:0:\n");
    system.save("19990301", marchLog({.accessList = {pack(userEntry("alice", "CORP"))}}));
    system.save("19990302", marchLog({.accessList = {pack(groupEntry("print", "CORP"))}}));
    system.save("19990303", marchLog({.accessList = {pack(userEntry("alice", computerName()))}}));
    const ToolResult result = system.run({"alpha"}, {.mounted = {system / "etc", "/etc"}});
    if (result.status == kNoNamespace || getuid() != 0)
        GTEST_SKIP() << "no mount namespace for the accounts";
    EXPECT_EQ(result.out, "job-name\nmarch\nmarch\n");
    EXPECT_EQ(result.err, "The user is not authorized to open the log file for the date 19990303.\n");
}

TEST(Admission, UserIdAndGroupsDecideRatherThanTheEnvironment) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    constexpr uid_t kDaemon = 1;
    constexpr uid_t kNobodysId = 3'999'999; // an id without an account
    const passwd *account = getpwuid(kDaemon);
    const group *groupOfDaemon = getgrgid(kDaemon);
    if (account == nullptr || groupOfDaemon == nullptr)
        GTEST_SKIP() << "no second account";
    PrintSystem system;
    const std::string tool = system / "qvledger";
    fs::copy_file(QVLEDGER_BINARY, tool); // a path that every user can reach
    fs::permissions(tool, fs::perms(0755));
    system.save("19990301", marchLog({.accessList = {pack(userEntry(account->pw_name, computerName()))}}));
    system.save("19990302",
                marchLog({.accessList = {pack(groupEntry(groupOfDaemon->gr_name, computerName()))}}));
    EXPECT_EQ(system.run({"alpha"}).status, 7) << "root is on neither access list";
    ToolResult result = system.run(
        {"alpha"},
        {.environment = {{"USER", "root"}, {"LOGNAME", "root"}}, .user = kDaemon, .program = tool});
    EXPECT_EQ(result.status, 0) << result.err << result.log;
    EXPECT_EQ(result.out, "job-name\nmarch\nmarch\n");
    for (const unsigned others : {14U, 15U}) { // number of groups besides the account's own group
        ToolRun run{.environment = {{"QV_LOG_LEVEL", "6"}}, .user = kDaemon, .program = tool};
        for (gid_t other = 2; other < 2 + others; ++other)
            run.groups.push_back(other);
        result = system.run({"-s", "19990302", "alpha"}, run);
        EXPECT_EQ(result.status, others == 14 ? 0 : 7) << others;
        EXPECT_EQ(result.log.find("the caller is in too many groups") == result.log.npos, others == 14);
    }
    result = system.run({"alpha"},
                        {.environment = {{"USER", account->pw_name}}, .user = kNobodysId, .program = tool});
    EXPECT_EQ(result.status, 30);
    const std::string unknown = "Unable to process data due to an unknown error.\n";
    EXPECT_EQ(result.err, unknown + unknown);
    fs::permissions(system.log("19990302"), fs::perms(0600));
    EXPECT_EQ(system.run({"alpha"}, {.user = kDaemon, .program = tool}).status, 6);
}
