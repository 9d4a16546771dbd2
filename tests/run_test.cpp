// How runs end: statuses, messages and log entries.
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <functional>

#include <unistd.h>

#include "samples/callers_account.h"
#include "samples/sample_oids.h"
#include "tests/support/log_daemon.h"
#include "tests/support/pipe.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static const char *const kEnvironment = "Unable to process the environment variables during initialization \n"
                                        "or the server name is invalid.\n";
static const char *const kUnknown = "Unable to process data due to an unknown error.\n";
static const LogHeader kForNobody{.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}};

using Preparation = std::function<void(const PrintSystem &)>;

// Runs the tool with -o FILE before the further arguments, once with an existing and once with a new FILE.
static void expectEnd(const char *label, const Preparation &prepare,
                      const std::vector<std::string> &furtherArguments, int status, const std::string &err,
                      const std::string &entry = "") {
    for (const bool existing : {false, true}) {
        SCOPED_TRACE(std::string(label) + (existing ? ", report file existed" : ", new report file"));
        PrintSystem system;
        system.save("19990301", marchLog());
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

TEST(Run, EveryOutcomeHasItsStatusMessageAndLogEntry) {
    const Preparation nothing = [](const PrintSystem &) {};
    const Preparation noRegistry = [](const PrintSystem &system) { fs::remove(system.root.registry()); };
    const Preparation noRoot = [](const PrintSystem &system) {
        system.root.writeRegistry({{serverKey("alpha"), {}}});
    };
    const Preparation refused = [](const PrintSystem &system) {
        system.save("19990301", marchLog(kForNobody));
    };
    const Preparation damaged = [](const PrintSystem &system) {
        system.save("19990301", Log(LogHeader{.numAttr = 0}));
    };
    const char *const noLogs = "There are no accounting logs available.\n";

    expectEnd("success", nothing, {"alpha"}, 0, "");
    expectEnd("no registry", noRegistry, {"alpha"}, 30, kEnvironment);
    expectEnd("no registry comes before a bad date", noRegistry, {"-s", "x", "alpha"}, 30, kEnvironment);
    expectEnd("bad date", nothing, {"-e", "19991301", "alpha"}, 30,
              "The month 13 specified from the date 19991301 is invalid.\n");
    expectEnd("report file in a missing folder", nothing, {"-o", "/nonexistent/100%s", "alpha"}, 30,
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
    expectEnd("damaged header", damaged, {"alpha"}, 12,
              "Unable to read accounting information because the data appears to be corrupted.\n",
              "internal data format error.");
}

TEST(Run, FailedLogsDoNotStopTheOthersAndTheLastOneGivesTheStatus) {
    PrintSystem system;
    for (const char *tail : {"19990228", "19990301", "19990302", "19990303", "19990304"})
        system.save(tail, marchLog());
    system.save("19990301", marchLog(kForNobody));
    system.save("19990303", marchLog().cutTo(100));
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
    const std::string report = system / "report";
    expectRun({"-e", "19990302", "-o", report, "alpha"}, 7, "",
              refused + "qvledger: the new report " + report + " is removed, because the run failed.\n");
}

TEST(Run, MessagesStayOutOfTheReportIfStandardErrorIsClosed) {
    PrintSystem system;
    system.save("19990301", marchLog(kForNobody));
    system.save("19990302", marchLog());
    const fs::path report = system / "report";
    writeFile(report, "");
    EXPECT_EQ(system.run({"-o", report, "alpha"}, {.closed = {0, 1, 2}}).status, 7);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n");
}

// Each record of the second log causes a message.  The run blocks once the messages have filled their pipe.
TEST(Run, ASignalEndsTheRunAfterTheCurrentRecord) {
    constexpr unsigned kRecords = 1000;
    const Log damaged = logOf(std::vector<Job>(
        kRecords, jobOf({{"job-name", {"x"}}}).attribute(dotted("job-owner"), STRING, {kUnreadable})));
    for (const auto &[asked, option, existed] :
         {std::tuple{SIGINT, "-d", true}, {SIGTERM, "-a", true}, {SIGHUP, "-a", false}}) {
        SCOPED_TRACE(asked);
        PrintSystem system;
        const fs::path report = system / "report";
        system.save("19990301", marchLog());
        system.save("19990302", damaged);
        if (existed)
            writeFile(report, "");
        std::signal(asked, SIG_DFL); // background processes may inherit ignored signals
        Pipe messages;
        const pid_t run = system.start({option, "-o", report, "alpha"}, {.error = messages.writer()});
        messages.waitUntilFull(100);
        ask(run, asked);
        messages.drain();
        const ToolResult result = system.finish(run);
        EXPECT_EQ(result.status, 1000 + asked);
        EXPECT_NE(fs::exists(system.log("19990301")), option == std::string("-d"));
        EXPECT_TRUE(fs::exists(system.log("19990302")));
        EXPECT_EQ(fs::exists(report), existed);
        if (!existed)
            continue;
        EXPECT_THAT(readFile(report), testing::MatchesRegex("job-name\nmarch\njob-name\n(x\n)*"));
        EXPECT_LT(fs::file_size(report), 2 * kRecords);
    }
}

TEST(Run, ASignalEndsTheRunWhileTheReportIsNotRead) {
    PrintSystem system;
    system.save("19990301", marchLog());
    system.save("19990302", logOf(std::vector<Job>(1000, jobOf({{"job-name", {std::string(900, 'x')}}}))));
    Pipe report;
    const pid_t run = system.start({"-d", "alpha"}, {.output = report.writer()});
    const std::string start = "job-name\nmarch\n";
    EXPECT_EQ(report.take(start.size()), start);
    report.waitUntilFull(4096); // a write first fills the page that the last write began
    kill(run, SIGTERM);
    EXPECT_EQ(system.finish(run).status, 1000 + SIGTERM);
    EXPECT_LT(report.drain().size(), 10'000U) << "only what was in the pipe";
    EXPECT_FALSE(fs::exists(system.log("19990301")));
    EXPECT_TRUE(fs::exists(system.log("19990302")));
}

static const std::vector<std::string> kDays = {"19990301", "19990302", "19990303"};
static void saveCleanLogs(const PrintSystem &system) {
    for (const std::string &day : kDays)
        system.save(day, logOf(std::vector<Job>(200, jobOf({{"job-name", {"x"}}}))));
}

TEST(Run, CleanLogsGiveFewEntries) {
    PrintSystem system;
    saveCleanLogs(system);
    const std::string counted = system.run({"-a", "alpha"}).log;
    EXPECT_LE(std::count(counted.begin(), counted.end(), '\n'), 5 * std::ssize(kDays)) << counted;
}

TEST(Run, AnUnreadSystemLogDoesNotBlock) {
    PrintSystem system;
    saveCleanLogs(system);
    fs::create_directory(system / "dev");
    const LogDaemon daemon(system / "dev/log", SOCK_DGRAM);
    // The paths are relative, because the temporary folder may be in /dev, which the mount hides.
    const ToolRun logged = {
        .environment = {{"QV_LOG", ""}, {"QV_LOG_LEVEL", "6"}, {"QV_REGISTRY", "root/registry.reg"}},
        .mounted = {system / "dev", "/dev"}};
    fs::current_path(system / "");
    const ToolResult result = system.run({"-p", "root/var/acct", "-O", "root/share/oid", "alpha"}, logged);
    fs::current_path("/");
    if (result.status == kNoNamespace)
        GTEST_SKIP() << "no mount namespace for a daemon's socket";
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.size(), std::string("job-name\n").size() + 600 * 2);
    EXPECT_NE(daemon.take(), "");
}

TEST(Run, ACleanRunReportsNoErrorToTheSystemLog) {
    PrintSystem system;
    Job job = jobOf({{"job-name", {"x"}}});
    job.document();
    addTexts(job, {{"document-name", {"a"}}});
    const Log log = logOf({job, jobOf({{"job-name", {"y"}}})});
    system.save("19990301", log);
    system.save("current", log);
    fs::create_directory(system / "dev");
    const LogDaemon daemon(system / "dev/log", SOCK_DGRAM);
    const ToolRun logged = {.environment = {{"QV_LOG", ""}, {"QV_REGISTRY", "root/registry.reg"}},
                            .mounted = {system / "dev", "/dev"}};
    fs::current_path(system / "");
    const ToolResult result = system.run(
        {"-a", "-d", "-o", "report", "-p", "root/var/acct", "-O", "root/share/oid", "alpha"}, logged);
    fs::current_path("/");
    if (result.status == kNoNamespace)
        GTEST_SKIP() << "no mount namespace for a daemon's socket";
    EXPECT_EQ(result.status, 0) << result.err;
    std::string entries;
    for (std::string entry = daemon.take(); !entry.empty(); entry = daemon.take()) {
        EXPECT_TRUE(entry.starts_with("<14>qvledger[")) << entry; // LOG_INFO
        entries += entry;
    }
    for (const char *part : {"]: 5 ala/", "in ALA_GetNextJobRecord; ", "ALA_A_NO_MORE_JOB_ATTR",
                             "in ALA_GetNextAttrFromJob; ALA_A_LAST_ATTRIBUTE", "_DELETE_CUR_DAY_LOG"})
        EXPECT_NE(entries.find(part), entries.npos) << part << "\n" << entries;
}

TEST(Run, TheLogNamesCallsAndPlaces) {
    PrintSystem system;
    const ToolRun traced{.environment = {{"QV_LOG_TRACE", "1"}}};
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"-h"}, {"-V"}, {}, {"-x", "alpha"}})
        EXPECT_EQ(system.run(arguments, traced).log, "") << "calls no library operation";
    const Log log = marchLog();
    system.save("19990301", Log(log).cutTo(log.size() - 2));
    const std::string traces = system.run({"alpha"}, traced).log;
    for (const char *trace : {" 7 ala/registration/register.cpp:", " 7 ala/log/record_reader.cpp:"})
        EXPECT_NE(traces.find(trace), traces.npos) << trace;
    for (const char *trace : {"ala/base/trace.h", "ALA_FreeJobRecord"})
        EXPECT_EQ(traces.find(trace), traces.npos) << trace;
}

TEST(Run, AMalformedRegistryFileIsNamedInTheLogAndInAMessage) {
    PrintSystem system;
    writeFile(system.root.registry(), "REGEDIT4\n[");
    const ToolResult refused = system.run({"alpha"});
    const std::string trouble = system.root.registry().string() + ":2: malformed key\n";
    EXPECT_NE(refused.log.find(" 5 ala/registration/environment.cpp:"), refused.log.npos) << refused.log;
    EXPECT_EQ(refused.log.find(trouble), refused.log.size() - trouble.size()) << refused.log;
    EXPECT_EQ(refused.err, kEnvironment + ("qvledger: the registry file cannot be used: " + trouble));
}

static void expectCause(PrintSystem &system, const std::vector<std::string> &arguments,
                        const std::string &cause) {
    const std::string log = system.run(arguments, {.environment = {{"QV_LOG_LEVEL", "6"}}}).log;
    EXPECT_NE(log.find(cause + "\n"), log.npos) << cause << "\n" << log;
}

// Entries of level 6 name failed system calls, and the place where a log is damaged.
TEST(Run, LevelSixNamesCauses) {
    PrintSystem system;
    const fs::path path = system.log("19990301");
    const std::string name = path.string();
    const Log log = marchLog();
    const std::size_t header = Log(LogHeader{}).size();

    system.save("19990301", Log(log).cutTo(log.size() - 2));
    const std::string place = name + ", date 19990301: ";
    const std::string unreadable = place + "the record at byte " + std::to_string(header) +
                                   " cannot be read after byte " + std::to_string(log.size() - 2) +
                                   ": the file ends\n";
    EXPECT_NE(system.run({"alpha"}).log.find(unreadable), std::string::npos);
    system.save("19990301", Log(log).cutTo(6));
    expectCause(system, {"alpha"}, "the header cannot be read after byte 6: ALA_A_FAIL_READ_LOG_FILE");
    EXPECT_NE(system.run({"alpha"}).log.find(place + "the header cannot be read\n"), std::string::npos);
    system.save("19990301", marchLog(kForNobody));
    expectCause(system, {"alpha"},
                "an entry does not admit the caller: the user \"nobody-at-all\" of the domain "
                "\"NOWHERE\", type 3051, level 2");
    const Account caller = callersAccount();
    expectCause(system, {"alpha"},
                "the caller is the user \"" + caller.user.name + "\" of the domain \"" + caller.user.domain +
                    "\" on the host \"" + computerName() + "\" of \"" + computerName() + "\"");
    expectCause(system, {"-p", "/nonexistent", "alpha"},
                "/nonexistent cannot be opened: No such file or directory");
    expectCause(system, {"-o", "/nonexistent/x", "alpha"},
                "/nonexistent/x cannot be opened: No such file or directory");
}

TEST(Run, LevelSixNamesALinkAFolderAndAMissingRegistryFile) {
    PrintSystem system;
    const fs::path path = system.log("19990301");
    fs::create_symlink(path.filename(), path);
    expectCause(system, {"alpha"}, path.string() + " cannot be opened: Too many levels of symbolic links");
    fs::remove(path);
    fs::create_directory(path);
    expectCause(system, {"alpha"}, "the header cannot be read after byte 0: Is a directory");
    fs::remove(system.root.registry());
    expectCause(system, {"alpha"},
                system.root.registry().string() +
                    " does not exist, or has neither the key SYSTEM\\CurrentControlSet\\Services\\qv spl "
                    "alpha\\Environment nor one for all servers");
}
