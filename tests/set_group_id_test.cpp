// A set-group-id installation lends its group's rights for the system's own logs and for nothing else.
#include <gtest/gtest.h>

#include <fstream>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "samples/account.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr uid_t kCaller = 1; // user and group, both with a name
constexpr gid_t kLent = 4;   // a group with a name that the caller is not in
static const char *const kSystemsRegistry = "/etc/qvledger/registry.reg";
static const char *const kRootless = "test-without-root"; // a server
static const char *const kLines = "job-name\nthe system's\n";

static void own(const fs::path &in_path, uid_t in_user, gid_t in_group, unsigned in_mode) {
    ASSERT_TRUE(chown(in_path.c_str(), in_user, in_group) == 0 && chmod(in_path.c_str(), in_mode) == 0)
        << in_path;
}

static Log logFor(const AccessEntry &in_entry, const std::string &in_name = "the system's") {
    return logOf({jobOf({{"job-name", {in_name}}})}, {.accessList = {pack(in_entry)}});
}

// The system belongs to root and the lent group; the caller has a root of his own.
class SetGroupId : public testing::Test {
protected:
    void SetUp() override {
#ifdef QVLEDGER_SANITIZED
        GTEST_SKIP() << "the sanitizers cannot look into a set-group-id program";
#endif
        if (readFile(kSystemsRegistry).find(kRootless) != std::string::npos)
            fs::remove(kSystemsRegistry); // left by a run that was stopped
        struct statvfs here;
        if (geteuid() != 0 || fs::exists(kSystemsRegistry) || getpwuid(kCaller) == nullptr ||
            getgrgid(kLent) == nullptr || statvfs(system.root.path().c_str(), &here) != 0 ||
            (here.f_flag & ST_NOSUID) != 0)
            GTEST_SKIP() << "needs root, two accounts, set-group-id programs and no installed registry file";
        caller = getpwuid(kCaller)->pw_name;
        fs::copy_file(QVLEDGER_BINARY, system / "qvledger");
        own(system / "qvledger", 0, kLent, 02755);
        installRegistry();
        system.save("19990301", logFor(userEntry(caller, computerName())));
        own(system.log("19990301"), 0, kLent, 0640);
        own(system.root.logs(), 0, kLent, 0750);
        own(system.root.oids(), 0, kLent, 0750);
        logFor(anyUserEntry(), "the caller's").save(mine.log("alpha", "19990301"));
        mine.writeRegistry("alpha");
        own(system / "mine", kCaller, kCaller, 0755);
        own(mine.logs(), kCaller, kCaller, 0755);
    }
    void TearDown() override {
        if (!installed)
            return;
        fs::remove(kSystemsRegistry);
        if (madeFolder)
            fs::remove(fs::path(kSystemsRegistry).parent_path());
    }

    void installRegistry() {
        madeFolder = fs::create_directory(fs::path(kSystemsRegistry).parent_path());
        installed = true;
        const std::pair<std::string, std::string> root{"QV_ROOT", system.root.path().string()};
        writeFile(kSystemsRegistry, registryText({{serverKey("alpha"), {root}}, {serverKey(kRootless), {}}}));
        own(kSystemsRegistry, 0, kLent, 0640);
    }

    ToolResult run(const std::vector<std::string> &in_arguments,
                   const std::vector<std::pair<std::string, std::string>> &in_environment = {}) {
        return system.run(in_arguments,
                          {.environment = in_environment, .user = kCaller, .program = system / "qvledger"});
    }

    void expectRefused(const char *in_label, const std::vector<std::string> &in_arguments, int in_status) {
        const ToolResult result = run(in_arguments);
        EXPECT_EQ(result.status, in_status) << in_label << ": " << result.err;
        EXPECT_EQ(result.out, "") << in_label;
    }

    PrintSystem system; // as is usual, QV_REGISTRY and QV_LOG name files in it
    const SampleRoot mine{system / "mine"};
    std::string caller;
    bool installed = false, madeFolder = false;
};

// One test: there is one file for the system's registry.
TEST_F(SetGroupId, LendsItsRightsForTheSystemsOwnLogsOnly) {
    const fs::path oldLog = system.log("19990301"), secret = system / "secret";
    ToolResult result = run({"alpha"});
    EXPECT_EQ(result.status, 0) << "a caller on the access list gets his report: " << result.err;
    EXPECT_EQ(result.out, kLines);

    // The environment.
    const fs::path locked = system / "locked"; // the group could write it
    writeFile(locked, "");
    own(locked, 0, kLent, 0660);
    const auto expectIgnored = [&](const std::string &name, const std::string &value) {
        result = run({"alpha"}, {{name, value}});
        EXPECT_EQ(result.status, 0) << name;
        EXPECT_EQ(result.out, kLines) << name;
    };
    expectIgnored("QV_REGISTRY", mine.registry());
    expectIgnored("QV_ROOT", mine.path());
    EXPECT_EQ(run({kRootless}, {{"QV_ROOT", mine.path()}}).status, 100);
    for (const fs::path &file : {locked, mine.path() / "log"}) {
        EXPECT_EQ(run({"-O", "/nonexistent", "alpha"},
                      {{"QV_LOG", file}, {"QV_LOG_LEVEL", "7"}, {"QV_LOG_TRACE", "1"}})
                      .status,
                  4);
        EXPECT_EQ(readFile(file), "");
    }
    EXPECT_FALSE(fs::exists(mine.path() / "log"));

    // Paths of the caller's choice.
    fs::copy(system.root.oids(), secret);
    logFor(anyUserEntry(), "secret").save(secret / "alpha.19990301");
    own(secret / "alpha.19990301", 0, kLent, 0640);
    own(secret, 0, kLent, 0750);
    expectRefused("-p at the group's folder", {"-p", secret, "alpha"}, 2);
    expectRefused("-p at the system's own folder", {"-p", system.root.logs(), "alpha"}, 2);
    fs::remove(mine.log("alpha", "19990301"));
    fs::create_symlink(secret / "alpha.19990301", mine.log("alpha", "19990301"));
    expectRefused("-p at a link to the group's log", {"-O", mine.oids(), "-p", mine.logs(), "alpha"}, 6);
    expectRefused("-O at the group's folder", {"-O", secret, "alpha"}, 4);
    expectRefused("-O at the system's own folder", {"-O", system.root.oids(), "alpha"}, 4);
    expectRefused("-o at the group's file", {"-o", locked, "alpha"}, 30);
    EXPECT_EQ(readFile(locked), "");
    own(system.root.path() / "var", 0, kLent, 0775);
    expectRefused("-o in the group's folder", {"-o", system.root.path() / "var/new", "alpha"}, 30);
    const fs::path report = mine.path() / "report";
    EXPECT_EQ(run({"-o", report, "alpha"}).status, 0);
    EXPECT_EQ(readFile(report), kLines);
    struct stat made = {};
    EXPECT_EQ(stat(report.c_str(), &made), 0);
    EXPECT_TRUE(made.st_uid == kCaller && made.st_gid == kCaller) << made.st_uid << ':' << made.st_gid;

    // Deletion, where the group could write as well.
    own(system.root.logs(), 0, kLent, 0770);
    result = run({"-d", "alpha"});
    EXPECT_EQ(result.status, 26);
    EXPECT_EQ(result.out, kLines);
    EXPECT_TRUE(fs::exists(oldLog));

    // The access list.
    const auto expectStatus = [&](const char *label, const AccessEntry &entry, int status) {
        logFor(entry).save(oldLog);
        EXPECT_EQ(run({"alpha"}).status, status) << label;
    };
    expectStatus("the lent group", groupEntry(getgrgid(kLent)->gr_name, computerName()), 7);
    expectStatus("the caller's group", groupEntry(getgrgid(kCaller)->gr_name, computerName()), 0);
    expectStatus("the owner of the program", userEntry("root", computerName()), 7);
}
