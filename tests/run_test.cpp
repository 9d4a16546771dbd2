// How runs end: status, messages, log entries, and what becomes of the report file.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/os.h"
#include "samples/account.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static const char *const kEnvironment = "Unable to process the environment variables during initialization \n"
                                        "or the server name is invalid.\n";
static const char *const kUnknown = "Unable to process data due to an unknown error.\n";
static const LogHeader kForNobody{.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}};

static Log march(const LogHeader &header = {}) {
    return logOf({jobOf({{"job-name", {"march"}}})}, header);
}

using Preparation = std::function<void(const PrintSystem &)>;

// Runs with -o FILE before the arguments, once with a file that existed and once with a new one.
static void expectEnd(const char *label, const Preparation &prepare,
                      const std::vector<std::string> &furtherArguments, int status, const std::string &err,
                      const std::string &entry = "") {
    for (const bool existing : {false, true}) {
        SCOPED_TRACE(std::string(label) + (existing ? ", report file existed" : ", new report file"));
        PrintSystem system;
        system.save("19990301", march());
        prepare(system);
        const fs::path report = system / "report";
        if (existing)
            writeFile(report, "earlier\n");
        std::vector<std::string> arguments = {"-o", report};
        arguments.insert(arguments.end(), furtherArguments.begin(), furtherArguments.end());
        const ToolResult result = system.run(arguments);
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, err);
        EXPECT_EQ(result.entries, entry.empty() ? std::vector<std::string>{} : std::vector{entry});
        EXPECT_EQ(fs::exists(report), existing || status == 0);
        EXPECT_EQ(readFile(report),
                  std::string(existing ? "earlier\n" : "") + (status == 0 ? "job-name\nmarch\n" : ""));
    }
}

TEST(Run, EveryEndHasItsStatusMessageAndLogEntry) {
    const Preparation nothing = [](const PrintSystem &) {};
    const Preparation noRegistry = [](const PrintSystem &system) { fs::remove(system.root.registry()); };
    const Preparation noRoot = [](const PrintSystem &system) {
        system.root.writeRegistry({{serverKey("alpha"), {}}});
    };
    const Preparation refused = [](const PrintSystem &system) { system.save("19990301", march(kForNobody)); };
    const Preparation damaged = [](const PrintSystem &system) {
        system.save("19990301", Log(LogHeader{.numAttr = 0}));
    };
    const Preparation deadLink = [](const PrintSystem &system) {
        fs::remove(system.log("19990301"));
        fs::create_symlink("nowhere", system.log("19990301"));
    };
    const char *const noLogs = "There are no accounting logs available.\n";

    expectEnd("success", nothing, {"alpha"}, 0, "");
    expectEnd("no registry", noRegistry, {"alpha"}, 30, kEnvironment);
    expectEnd("no registry comes before a bad date", noRegistry, {"-s", "x", "alpha"}, 30, kEnvironment);
    expectEnd("bad date", nothing, {"-e", "19991301", "alpha"}, 30,
              "The month 13 specified from the date 19991301 is invalid.\n");
    expectEnd("report file in no folder", nothing, {"-o", "/nonexistent/100%s", "alpha"}, 30,
              "Unable to open the file /nonexistent/100%s to append more accounting information.\n");
    expectEnd("no QV_ROOT for the logs", noRoot, {"alpha"}, 100, kEnvironment,
              "QV_ROOT environment variable not set");
    expectEnd("no QV_ROOT for the OID database", noRoot, {"-p", "/", "alpha"}, 30, kUnknown,
              "unknown error.");
    expectEnd("no OID database", nothing, {"-O", "/nonexistent", "alpha"}, 4,
              "A problem has been encountered using the OID database.\n",
              "Object Identifier Database (OID) error.");
    expectEnd("no log directory", nothing, {"-p", "/nonexistent", "alpha"}, 2,
              "The pathname specified for the accounting logs is invalid.\n",
              "invalid accounting log file pathname.");
    expectEnd("no log of the server", nothing, {"beta"}, 29,
              "Unable to find the accounting logs for server beta.\n", "accounting log files not found.");
    expectEnd("no log in the range", nothing, {"-s", "19990302", "alpha"}, 29, noLogs);
    expectEnd("not admitted", refused, {"alpha"}, 7,
              "The user is not authorized to open the log file for the date 19990301.\n",
              "user is not authorized to access the accounting logs.");
    expectEnd("log cannot be opened", deadLink, {"alpha"}, 6,
              "Unable to open the accounting log for the date 19990301.\n",
              "unable to open accounting log file.");
    expectEnd("damaged header", damaged, {"alpha"}, 12,
              "Unable to read accounting information because the data appears to be corrupted.\n",
              "internal data format error.");
}

TEST(Run, FailedLogsDoNotStopTheOthersAndTheLastOneGivesTheStatus) {
    PrintSystem system;
    for (const char *tail : {"19990228", "19990301", "19990302", "19990303", "19990304"})
        system.save(tail, march());
    system.save("19990301", march(kForNobody));
    system.save("19990303", march().cutTo(100));
    const std::string refused = "The user is not authorized to open the log file for the date 19990301.\n";
    const auto expectRun = [&](const std::vector<std::string> &arguments, int status, const char *out,
                               const std::string &err) {
        const ToolResult result = system.run(arguments);
        SCOPED_TRACE(testing::PrintToString(arguments));
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, out);
        EXPECT_EQ(result.err, err);
    };
    expectRun({"alpha"}, 11, "job-name\nmarch\nmarch\nmarch\n",
              refused + "Unable to read the accounting file.\n");
    expectRun({"-e", "19990302", "alpha"}, 7, "job-name\nmarch\nmarch\n", refused);
    expectRun({"-s", "19990302", "-e", "19990302x", "alpha"}, 0, "job-name\nmarch\n", "");
}

TEST(Run, MessagesStayOutOfTheReportWhenTheErrorStreamIsClosed) {
    PrintSystem system;
    system.save("19990301", march(kForNobody));
    system.save("19990302", march());
    const fs::path report = system / "report";
    EXPECT_EQ(system.run({"-o", report, "alpha"}, {.closed = {0, 1, 2}}).status, 7);
    EXPECT_FALSE(fs::exists(report));
    writeFile(report, "");
    EXPECT_EQ(system.run({"-o", report, "alpha"}, {.closed = {0, 1, 2}}).status, 7);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n");
}

TEST(Run, ReportFileIsHeldAndEndsInWholeLines) {
    PrintSystem system;
    system.save("19990301", march());
    const fs::path report = system / "report", link = system / "link";
    fs::create_symlink("report", link);
    EXPECT_EQ(system.run({"-o", link, "-s", "19990302", "alpha"}).status, 29);
    EXPECT_FALSE(fs::exists(report)) << "made through the link, and of no use";
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(system.run({"-o", link, "alpha"}).status, 0);
    writeFile(report, "half a line");
    EXPECT_EQ(system.run({"-g", "-o", link, "alpha"}).status, 0);
    EXPECT_EQ(readFile(report), "half a line\nmarch\n");

    const int held = open(report.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(OS_LockFile(held), OS_DONE);
    const pid_t waiting = system.start({"-o", report, "alpha"}),
                ended = system.start({"-o", report, "alpha"});
    usleep(100'000);
    kill(ended, SIGTERM);
    EXPECT_EQ(system.finish(ended).status, 1000 + SIGTERM);
    EXPECT_EQ(readFile(report), "half a line\nmarch\n");
    fs::rename(report, system / "moved");
    close(held);
    EXPECT_EQ(system.finish(waiting).status, 0);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n") << "in the file that has the name now";
}

TEST(Run, ReportThatIsALogIsRefused) {
    PrintSystem system;
    for (const char *tail : {"19990301", "current"})
        system.save(tail, march());
    const std::string before = readFile(system.log("current"));
    fs::create_symlink(system.log("current"), system / "link");
    fs::create_hard_link(system.log("current"), system / "second name");
    for (const fs::path &report :
         {system.log("current"), system / "link", system / "second name", system.log("new")}) {
        const ToolResult result = system.run({"-o", report, "-e", "19990301", "alpha"});
        EXPECT_EQ(result.status, 30);
        EXPECT_EQ(result.err,
                  "Unable to open the file " + report.string() + " to append more accounting information.\n");
    }
    const int output = open(system.log("current").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    EXPECT_EQ(system.run({"alpha"}, {.output = output}).status, 30);
    close(output);
    EXPECT_EQ(readFile(system.log("current")), before);
    EXPECT_FALSE(fs::exists(system.log("new")));
}

TEST(Run, SignalsEndItBehindTheRecordAtHand) {
    for (const int asked : {SIGINT, SIGTERM, SIGHUP}) {
        PrintSystem system;
        const fs::path report = system / "report";
        system.save("19990301", march());
        system.save("19990302",
                    logOf(std::vector<Job>(40'000, jobOf({{"job-name", {std::string(900, 'x')}}}))));
        writeFile(report, "");
        const pid_t run = system.start({"-d", "-o", report, "alpha"});
        while (fs::file_size(report) < 1'000'000)
            usleep(200);
        kill(run, asked);
        EXPECT_EQ(system.finish(run).status, 1000 + asked);
        const std::string written = readFile(report);
        EXPECT_EQ((written.size() - std::string("job-name\nmarch\n").size()) % 901, 0U) << "whole lines";
        EXPECT_LT(written.size(), 36'000'000U);
        EXPECT_FALSE(fs::exists(system.log("19990301")));
        EXPECT_TRUE(fs::exists(system.log("19990302")));
    }
}

TEST(Run, AFullFileKeepsItsWholeLines) {
    PrintSystem system;
    const fs::path report = system / "report";
    system.save("19990301", logOf(std::vector<Job>(1000, jobOf({{"job-name", {std::string(999, 'x')}}}))));
    const rlimit limit = {500'500, RLIM_INFINITY}, none = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const pid_t run = system.start({"-d", "-g", "-o", report, "alpha"});
    setrlimit(RLIMIT_FSIZE, &none);
    const ToolResult result = system.finish(run);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "qvledger: the report " + report.string() + " could not be written: File too large.\n");
    EXPECT_EQ(fs::file_size(report), 500'000U);
    EXPECT_TRUE(fs::exists(system.log("19990301")));
}

TEST(Run, AccessListDecidesByUserAndGroup) {
    const Account caller = callersAccount();
    const auto statusFor = [](const AccessEntry &entry) {
        PrintSystem system;
        system.save("19990301", march({.accessList = {pack(entry)}}));
        return system.run({"alpha"}).status;
    };
    EXPECT_EQ(statusFor(userEntry(caller.user.name, caller.user.domain)), 0);
    EXPECT_EQ(statusFor(userEntry(caller.user.name, "ELSEWHERE")), 7);
    if (!caller.groups.empty() && caller.groupIds <= 15) {
        EXPECT_EQ(statusFor(groupEntry(caller.groups[0].name, caller.groups[0].domain)), 0);
    }
}

TEST(Run, AnotherUserIsJudgedByWhoHeIs) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    constexpr uid_t kDaemon = 1;
    constexpr uid_t kNobodysId = 3'999'999; // without an account
    const passwd *account = getpwuid(kDaemon);
    const group *groupOfDaemon = getgrgid(kDaemon);
    if (account == nullptr || groupOfDaemon == nullptr)
        GTEST_SKIP() << "no second account";
    PrintSystem system;
    const std::string tool = system / "qvledger";
    fs::copy_file(QVLEDGER_BINARY, tool); // where every user can reach it
    fs::permissions(tool, fs::perms(0755));
    system.save("19990301", march({.accessList = {pack(userEntry(account->pw_name, computerName()))}}));
    system.save("19990302",
                march({.accessList = {pack(groupEntry(groupOfDaemon->gr_name, computerName()))}}));
    EXPECT_EQ(system.run({"alpha"}).status, 7) << "root is no member";
    ToolResult result = system.run(
        {"alpha"},
        {.environment = {{"USER", "root"}, {"LOGNAME", "root"}}, .user = kDaemon, .program = tool});
    EXPECT_EQ(result.status, 0) << result.err << result.log;
    EXPECT_EQ(result.out, "job-name\nmarch\nmarch\n");
    result = system.run({"alpha"},
                        {.environment = {{"USER", account->pw_name}}, .user = kNobodysId, .program = tool});
    EXPECT_EQ(result.status, 30);
    EXPECT_EQ(result.err, std::string(kUnknown) + kUnknown);
    fs::permissions(system.log("19990302"), fs::perms(0600));
    EXPECT_EQ(system.run({"alpha"}, {.user = kDaemon, .program = tool}).status, 6);
}

TEST(Run, CatalogueWinsOverTheDefaultTexts) {
    PrintSystem system;
    writeFile(system / "texts", "$set 59\n$quote \"\n"
                                "110 \"Aufruf: qvledger SERVER\\n\"\n"
                                "108 \"Im Datum %2$s gibt es keinen Monat %1$d.\\n\"\n"
                                "109 \"Im Datum %2$s gibt es 100%% den Tag nicht.\\n\"\n"
                                "106 \"Falscher Anfang.\\n\"\n107 \"Nicht %1$d.\\n\"\n");
    const std::string command =
        "gencat '" + (system / "qvledg.cat").string() + "' '" + (system / "texts").string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const ToolRun translated{.environment = {{"NLSPATH", system / "%N.cat"}}};
    EXPECT_EQ(system.run({"-h"}, translated).err, "Aufruf: qvledger SERVER\n");
    EXPECT_EQ(system.run({"-s", "19991301", "alpha"}, translated).err,
              "Im Datum 19991301 gibt es keinen Monat 13.\n");
    EXPECT_EQ(system.run({"-s", "19990100", "alpha"}, translated).err,
              "Im Datum 19990100 gibt es 100% den Tag nicht.\n");
    EXPECT_EQ(system.run({"-s", "1999", "alpha"}, translated).err, "Falscher Anfang.\n");
    EXPECT_TRUE(system.run({"-e", "1999", "alpha"}, translated).err.starts_with("The end date 1999 is"))
        << "a number in the place of a text";
    const ToolRun german{.environment = {{"NLSPATH", QVLEDGER_CATALOGUES "/de/%N.cat"}}};
    EXPECT_TRUE(system.run({"-h"}, german).err.starts_with("Aufruf: qvledger [-h] "));
    EXPECT_EQ(system.run({"-s", "19991301", "alpha"}, german).err,
              "Der Monat 13 im Datum 19991301 ist ung\u00FCltig.\n");
}

TEST(Run, CatalogueOfTheInstallationStandsIn) {
    PrintSystem system;
    fs::path place = QVLEDGER_LOCALEDIR;
    while (!fs::exists(place))
        place = place.parent_path();
    const fs::path laid = system / "laid" / fs::relative(QVLEDGER_LOCALEDIR, place) / "C/LC_MESSAGES";
    fs::create_directories(laid);
    fs::copy_file(QVLEDGER_CATALOGUES "/de/qvledg.cat", laid / "qvledg");
    const ToolResult result =
        system.run({"-h"}, {.environment = {{"LC_ALL", "C.UTF-8"}}, .mounted = {system / "laid", place}});
    if (result.status == kNoNamespace)
        GTEST_SKIP() << "needs a mount namespace";
    EXPECT_TRUE(result.err.starts_with("Aufruf: qvledger [-h] ")) << result.err;
}

TEST(Run, LogShowsWhatWasCalledAndWhere) {
    PrintSystem system;
    const ToolRun traced{.environment = {{"QV_LOG_TRACE", "1"}}};
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"-h"}, {"-V"}, {}, {"-x", "alpha"}})
        EXPECT_EQ(system.run(arguments, traced).log, "") << "calls nothing of the facility";
    const Log log = march();
    system.save("19990301", Log(log).cutTo(log.size() - 2));
    const std::string traces = system.run({"alpha"}, traced).log;
    for (const char *trace : {" 7 ala/registration/register.cpp:", " 7 ala/log/record_reader.cpp:"})
        EXPECT_NE(traces.find(trace), traces.npos) << trace;
    for (const char *trace : {"ala/base/trace.h", "ALA_FreeJobRecord"})
        EXPECT_EQ(traces.find(trace), traces.npos) << trace;
    writeFile(system.root.registry(), "REGEDIT4\n[");
    const std::string told = system.run({"alpha"}).log;
    EXPECT_NE(told.find(" 5 platform/posix/registry.cpp:"), told.npos) << told;
    EXPECT_EQ(told.find('\n'), told.size() - 1) << told;
}
