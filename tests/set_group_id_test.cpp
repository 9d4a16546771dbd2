// A set-group-id installation uses its group's rights only for the system's registry, OID tables and logs.
#include <gtest/gtest.h>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "samples/callers_account.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr uid_t kCaller = 1; // user and group id of the runs; both have a name
constexpr gid_t kLent = 4;   // the set-group-id program's group, which has a name; the user is no member
static const char *const kRootless = "test-without-root"; // server without QV_ROOT in the registry
static const char *const kLines = "job-name\nthe system's\n";

static void own(const fs::path &path, uid_t user, gid_t group, unsigned mode) {
    ASSERT_TRUE(chown(path.c_str(), user, group) == 0 && chmod(path.c_str(), mode) == 0) << path;
}

static Log logFor(const AccessEntry &entry, const std::string &name = "the system's") {
    return logOf({jobOf({{"job-name", {name}}})}, {.accessList = {pack(entry)}});
}

// The print system belongs to root and the group kLent; `mine` belongs to the user and the user's group.
class SetGroupId : public testing::Test {
protected:
    void SetUp() override {
#ifdef QVLEDGER_SANITIZED
        GTEST_SKIP() << "the sanitizers do not work in a set-group-id program";
#endif
        struct statvfs here;
        if (geteuid() != 0 || getpwuid(kCaller) == nullptr || getgrgid(kLent) == nullptr ||
            statvfs(system.root.path().c_str(), &here) != 0 || (here.f_flag & ST_NOSUID) != 0)
            GTEST_SKIP() << "needs root, two accounts and set-group-id programs";
        makeEtc();
        if (system.run({"-V"}, {.mounted = {system / "etc", "/etc"}}).status == kNoNamespace)
            GTEST_SKIP() << "needs a mount namespace";
        caller = getpwuid(kCaller)->pw_name;
        install(QVLEDGER_BINARY);
        system.save("19990301", logFor(userEntry(caller, computerName())));
        own(system.log("19990301"), 0, kLent, 0640);
        own(system.root.logs(), 0, kLent, 0750);
        own(system.root.oids(), 0, kLent, 0750);
        logFor(anyUserEntry(), "the caller's").save(mine.log("alpha", "19990301"));
        mine.writeRegistry("alpha");
        own(system / "mine", kCaller, kCaller, 0755);
        own(mine.logs(), kCaller, kCaller, 0755);
    }

    void install(const char *program) {
        fs::copy_file(program, system / "qvledger", fs::copy_options::overwrite_existing);
        own(system / "qvledger", 0, kLent, 02755);
    }

    // Makes the folder that the runs see as /etc: the accounts, and a registry file.
    void makeEtc() {
        fs::create_directories(system / "etc/qvledger");
        for (const char *name : {"group", "ld.so.cache", "nsswitch.conf", "passwd"})
            if (const fs::path file = fs::path("/etc") / name; fs::exists(file))
                fs::copy_file(file, system / "etc" / name);
        layRegistry("9");
    }

    // Writes the registry file.  The machine is in a LAN group if the flags of its network logon are 8.
    void layRegistry(const std::string &flags) {
        const std::pair<std::string, std::string> root{"QV_ROOT", system.root.path().string()};
        const std::string control = "SYSTEM\\CurrentControlSet\\";
        writeFile(system / "etc/qvledger/registry.reg",
                  registryText({{serverKey("alpha"), {root}},
                                {serverKey(kRootless), {}},
                                {control + "Services\\LanmanWorkstation\\Parameters", {{"LanGroup", "LAN"}}},
                                {control + "Enum\\Root\\LEGACY_NETLOGON\\0000", {}}}) +
                      "\"StatusFlags\"=dword:" + flags + '\n');
        own(system / "etc/qvledger/registry.reg", 0, kLent, 0640);
    }

    ToolResult run(const std::vector<std::string> &arguments,
                   const std::vector<std::pair<std::string, std::string>> &environment = {}) {
        return system.run(arguments, {.environment = environment,
                                      .mounted = {system / "etc", "/etc"},
                                      .user = kCaller,
                                      .program = system / "qvledger"});
    }

    void expectRefused(const char *label, const std::vector<std::string> &arguments, int status) {
        const ToolResult result = run(arguments);
        EXPECT_EQ(result.status, status) << label << ": " << result.err;
        EXPECT_EQ(result.out, "") << label;
    }

    PrintSystem system; // its folder contains the files that QV_REGISTRY and QV_LOG name
    const SampleRoot mine{system / "mine"};
    std::string caller;
};

TEST_F(SetGroupId, UsesTheGroupsRightsForTheSystemsOwnLogsOnly) {
    const fs::path oldLog = system.log("19990301"), secret = system / "secret";
    ToolResult result = run({"alpha"});
    EXPECT_EQ(result.status, 0) << "a caller on the access list gets his report: " << result.err;
    EXPECT_EQ(result.out, kLines);

    const fs::path locked = system / "locked"; // the group kLent may write to it
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

    // The program does not use the group's rights for a path that the user chooses.
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

    // The program deletes no log, although the group may write to the folder.
    own(system.root.logs(), 0, kLent, 0770);
    result = run({"-d", "alpha"});
    EXPECT_EQ(result.status, 26);
    EXPECT_EQ(result.out, kLines);
    EXPECT_TRUE(fs::exists(oldLog));

    const auto expectStatus = [&](const char *label, const AccessEntry &entry, int status) {
        logFor(entry).save(oldLog);
        EXPECT_EQ(run({"alpha"}).status, status) << label;
    };
    expectStatus("the lent group", groupEntry(getgrgid(kLent)->gr_name, computerName()), 7);
    expectStatus("the caller's group", groupEntry(getgrgid(kCaller)->gr_name, computerName()), 0);
    expectStatus("the owner of the program", userEntry("root", computerName()), 7);

    // The machine's domain comes from the system's registry, even with -O.
    const AccessEntry inMachinesDomain = {text(caller), {text(""), oid(DOMAIN_NT)}, 1};
    for (const auto &[flags, status] : {std::pair{"9", 0}, {"8", 7}}) {
        layRegistry(flags);
        expectStatus("the machine's domain", inMachinesDomain, status);
        EXPECT_EQ(run({"-O", mine.oids(), "alpha"}).status, status) << flags;
    }
}

TEST_F(SetGroupId, LendsTheGroupsRightsToJsonAndSumsForAdmittedLogsOnly) {
    const struct {
        const char *program;
        std::vector<std::string> arguments;
        const char *admitted; // a part of the output
    } kCases[] = {
        {QVLEDGER_JSON_BINARY, {"alpha"}, R"("job-name":["the system's"])"},
        {QVLEDGER_SUM_BINARY, {"-b", "job-name", "-f", "tsv", "alpha"}, "\nthe system's\t1\t"},
    };
    system.save("19990302", logFor(userEntry("root", computerName()), "secret"));
    own(system.log("19990302"), 0, kLent, 0640);
    for (const auto &[program, arguments, admitted] : kCases) {
        install(program);
        ToolResult result = run(arguments, {{"QV_REGISTRY", mine.registry()}});
        EXPECT_EQ(result.status, 7) << program << ": " << result.err;
        EXPECT_NE(result.out.find(admitted), std::string::npos) << program << ": " << result.out;
        EXPECT_EQ(result.out.find("secret"), std::string::npos) << program;
        result = run({"-p", system.root.logs(), "alpha"});
        EXPECT_EQ(result.status, 2) << program << ": a path of the caller's choice";
    }
    install(QVLEDGER_JSON_BINARY);
    own(system.root.path() / "var", 0, kLent, 0775);
    const std::string state = system.root.path() / "var/state";
    EXPECT_EQ(run({"-c", state, "alpha"}).status, 30) << "a state file in the group's folder";
    EXPECT_FALSE(fs::exists(state) || fs::exists(state + ".lock"));
}

TEST_F(SetGroupId, ChecksAdmittedLogsAndSavesWithTheCallersRights) {
    install(QVLEDGER_CHECK_BINARY);
    system.save("19990302", logFor(userEntry("root", computerName()), "secret").cutTo(600));
    const Log whole = logFor(userEntry(caller, computerName()));
    Log damaged = whole;
    system.save("19990303", damaged.raw("stray"));
    for (const char *day : {"19990302", "19990303"})
        own(system.log(day), 0, kLent, 0640);
    writeFile(system.log("payroll.txt"), "");
    const fs::path saved = mine.path() / "saved", groups = system / "groups";
    for (const fs::path &folder : {saved, groups})
        fs::create_directory(folder);
    own(saved, kCaller, kCaller, 0755);
    own(groups, 0, kLent, 0770);

    ToolResult result = run({"-S", saved, "alpha"});
    EXPECT_EQ(result.status, 50) << result.err;
    EXPECT_NE(result.out.find("alpha.19990302\t\t\t\tno\t\t\t\t\tnot admitted\t"), std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find(system.root.path()), std::string::npos) << "a path of the system";
    EXPECT_EQ(result.out.find("payroll"), std::string::npos) << "a file that is not a log";
    EXPECT_EQ(std::distance(fs::directory_iterator(saved), {}), 1);
    EXPECT_EQ(readFile(saved / "alpha.19990303"), whole.bytes());
    struct stat made = {};
    ASSERT_EQ(stat((saved / "alpha.19990303").c_str(), &made), 0);
    EXPECT_TRUE(made.st_uid == kCaller && made.st_gid == kCaller && (made.st_mode & 0777U) == 0600)
        << "the log's group permissions are not for the caller's group";

    EXPECT_EQ(run({"-S", groups, "alpha"}).status, 74);
    EXPECT_TRUE(fs::is_empty(groups));
    result = run({"-p", system.root.logs(), "alpha"});
    EXPECT_EQ(result.status, 2) << "a path of the caller's choice";
    fs::remove(system.root.oids() / "oids");
    result = run({"alpha"});
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ((result.out + result.err).find(system.root.path()), std::string::npos) << "a system's path";
}
