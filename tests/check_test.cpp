// What qvledger-check reports about a log, what it saves, and what it does not reveal.
#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <sstream>

#include <fcntl.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "ala/ala.h"
#include "platform/descriptor.h"
#include "samples/sample_oids.h"
#include "tests/support/pipe.h"
#include "tests/support/run_tool.h"

using namespace samples;
using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

static const ToolRun kCheck{.program = QVLEDGER_CHECK_BINARY};

static std::vector<std::string> split(const std::string &text, char separator) {
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, separator);)
        parts.push_back(part);
    return parts;
}

// Returns a log's field in the column of this name; empty if the log's line has no such column.
static std::string field(const ToolResult &result, const std::string &log, const std::string &name) {
    std::vector<std::string> names;
    for (const std::string &line : split(result.out, '\n')) {
        const std::vector<std::string> fields = split(line, '\t');
        if (fields.size() > 2 && fields[0] == "server")
            names = fields;
        const auto at = static_cast<std::size_t>(std::ranges::find(names, name) - names.begin());
        if (fields.size() > 1 && fields[1] == log)
            return at < fields.size() ? fields[at] : "";
    }
    return "no such line";
}

static Log threeJobs() {
    return logOf({jobOf({{"job-name", {"one"}}, {"job-owner", {"a", "b"}}}),
                  jobOf({{"job-name", {"two"}}, {"job-owner", {"a", "b"}}}),
                  jobOf({{"job-name", {"three"}}, {"job-owner", {"a", "b"}}})},
                 {.createDate = 1000000000});
}

TEST(Check, EachStateOfALogIsReported) {
    const Log whole = threeJobs();
    const std::size_t second = whole.records()[1];
    const struct {
        const char *label, *date, *state, *records, *firstDamage, *reason;
        Log log;
        int status;
    } cases[] = {
        {"whole", "19990301", "whole", "3", "", "", whole, 0},
        {"empty", "19990302", "empty", "0", "", "", Log(), 0},
        {"cut", "19990303", "cut", "1", nullptr, "the file ends inside a record",
         Log(whole).cutTo(second + 40), 50},
        {"damaged", "19990304", "damaged", "2", nullptr, "impossible attribute counts",
         Log(whole).overwrite(second, "\xff"), 50},
        {"half a header", "19990305", "cut", "", "", "the file ends inside its header", Log(whole).cutTo(100),
         50},
        {"damaged header", "19990310", "damaged", "", "",
         "the header is damaged: the access list cannot be read", Log(whole).overwrite(172, "\x01"), 50},
        {"header of another version", "19990306", "damaged", "0", nullptr,
         "the version in the header is not that of the records", Log(whole).overwrite(3, "\x02"), 50},
        {"refused", "19990307", "not admitted", "", "", "the access list does not admit the caller",
         logOf({jobOf({{"job-name", {"secret"}}})}, {.accessList = {}}), 7},
    };
    PrintSystem system;
    for (const auto &one : cases) {
        SCOPED_TRACE(one.label);
        system.save(one.date, one.log);
        const ToolResult result = system.run({"-s", one.date, "-e", one.date, "alpha"}, kCheck);
        const std::string log = std::string("alpha.") + one.date;
        EXPECT_EQ(result.status, one.status) << result.err;
        EXPECT_EQ(field(result, log, "state"), one.state);
        EXPECT_EQ(field(result, log, "records"), one.records);
        EXPECT_EQ(field(result, log, "reason"), one.reason);
        const std::size_t damage = one.records == std::string("0") ? whole.records()[0] : second;
        EXPECT_EQ(field(result, log, "first-damage"),
                  one.firstDamage != nullptr ? "" : std::to_string(damage));
        EXPECT_THAT(result.out, Not(HasSubstr("secret")));
    }
    EXPECT_EQ(system.run({"alpha"}, kCheck).status, 50) << "damage outweighs a refusal";
}

TEST(Check, AFolderWithTheNameOfALogIsReported) {
    PrintSystem system;
    fs::create_directory(system.log("19990308"));
    EXPECT_EQ(field(system.run({"alpha"}, kCheck), "alpha.19990308", "reason"), "not a regular file");
}

// Returns the log, state and reason of each line about a log that is missing.
static std::string missingIn(const ToolResult &result) {
    std::string found;
    for (const std::string &line : split(result.out, '\n'))
        if (const auto fields = split(line, '\t');
            fields.size() == 14 && (fields[10] == "not a log" || fields[10] == "missing"))
            found += fields[1] + '|' + fields[10] + '|' + fields[13].substr(fields[13].rfind(": ")) + '\n';
    return found;
}

TEST(Check, NamesThatAreNotLogsAndDaysWithoutALogAreListed) {
    PrintSystem system;
    for (const char *day : {"19990226", "19990301", "19990303", "old", "19990302.gz", "199903011",
                            "19990301.being-deleted", "x.19990302", "x.current.gz"})
        system.save(day, threeJobs());
    threeJobs().save(system.root.log("Alpha", "19990302"));
    threeJobs().save(system.root.log("beta", "19990302.gz"));
    const std::string old = "alpha.old|not a log|: a report cannot open it\n",
                      days = "|missing|: 1999-02-27 to 1999-02-28\n",
                      names = "Alpha.19990302|not a log|: reports ignore it\n"
                              "alpha.199903011|not a log|: reports ignore it\n"
                              "alpha.19990302.gz|not a log|: reports ignore it\n";
    ToolResult result = system.run({"alpha"}, kCheck);
    EXPECT_EQ(missingIn(result), old + names + days + "|missing|: 1999-03-02\n");
    EXPECT_EQ(result.status, 51);
    EXPECT_EQ(missingIn(system.run({"-q", "alpha"}, kCheck)), old + names);
    EXPECT_THAT(missingIn(system.run({"-e", "19990227", "alpha"}, kCheck)),
                HasSubstr("|missing|: 1999-02-27\n"));
    EXPECT_EQ(missingIn(system.run({"-e", "19990301", "alpha"}, kCheck)),
              old + "alpha.199903011|not a log|: reports ignore it\n" + days);
    EXPECT_EQ(system.run({"-e", "19990225", "alpha"}, kCheck).status, 29);

    fs::remove(system.log("old"));
    EXPECT_EQ(system.run({"-e", "19990226", "alpha"}, kCheck).status, 0);
    fs::remove(system.log("199903011"));
    EXPECT_EQ(system.run({"-e", "19990301", "alpha"}, kCheck).status, 51) << "days alone";
    EXPECT_EQ(system.run({"-q", "-e", "19990301", "alpha"}, kCheck).status, 0);
    system.save("19990226", threeJobs().cutTo(600));
    EXPECT_EQ(system.run({"alpha"}, kCheck).status, 50);

    for (const char *day : {"19990226", "19990301", "19990303"})
        fs::remove(system.log(day));
    result = system.run({"alpha"}, kCheck);
    EXPECT_EQ(result.status, 29);
    EXPECT_THAT(missingIn(result), HasSubstr("alpha.19990302.gz|")) << "no log is left";
}

TEST(Check, ALogsContentsAreCountedAndSkippedValuesHaveAReason) {
    Job job = jobOf({{"job-name", {"one", "two"}}});
    job.attribute("1.3.6.1.4.1.32473.9999", STRING, {packString("x")});
    job.document().attribute(dotted("document-name"), STRING, {packString("a")});
    job.document().attribute(dotted("document-name"), STRING, {packString("b")});
    PrintSystem system;
    system.save("19990301", logOf({job}, {.createDate = 1000000000}));
    const ToolResult result = system.run({"alpha"}, kCheck);
    EXPECT_EQ(result.status, 0) << result.err;
    const std::pair<const char *, const char *> expected[] = {
        {"version", "3"},     {"created", "2001-09-09T01:46:40Z"},
        {"admitted", "yes"},  {"access-entries", "1"},
        {"documents", "2"},   {"values", "5"},
        {"stray-bytes", "0"}, {"reason", "skipped 1: no name for an object identifier"},
        {"state", "whole"},
    };
    for (const auto &[name, value] : expected)
        EXPECT_EQ(field(result, "alpha.19990301", name), value) << name;
}

TEST(Check, ADamagedLogsIntactRecordsAreSaved) {
    PrintSystem system;
    Log damaged = threeJobs();
    const std::size_t begin = damaged.records()[1], end = damaged.records()[2];
    damaged.overwrite(begin, "\xff");
    system.save("19990301", damaged);
    system.save("19990302", threeJobs());
    setChanged(system.log("19990301"), 1000000000);
    const fs::path folder = system / "bücher";
    fs::create_directory(folder);
    const ToolResult result = system.run({"-S", folder, "alpha"}, kCheck);
    EXPECT_EQ(result.status, 50);
    EXPECT_THAT(result.err, HasSubstr("saved as " + (folder / "alpha.19990301").string() + ".\n"));
    EXPECT_THAT(result.err, HasSubstr("bytes " + std::to_string(begin) + " to " + std::to_string(end) +
                                      " belong to no intact record and are not saved; the record after them "
                                      "was found in step.\n"));
    const std::string &bytes = damaged.bytes();
    EXPECT_EQ(readFile(folder / "alpha.19990301"), bytes.substr(0, begin) + bytes.substr(end));
    EXPECT_FALSE(fs::exists(folder / "alpha.19990302")) << "a whole log is not saved";
    struct stat status = {};
    ASSERT_EQ(stat((folder / "alpha.19990301").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(system.run({"-p", folder, "alpha"}).out, "job-name\tjob-owner\none\ta b\nthree\ta b\n");
    EXPECT_EQ(system.run({"-p", folder, "alpha"}, kCheck).status, 0);

    std::ofstream(folder / "alpha.19990301") << "mine";
    const ToolResult again = system.run({"-S", folder, "alpha"}, kCheck);
    EXPECT_EQ(again.status, 74);
    EXPECT_THAT(again.err, HasSubstr("File exists"));
    EXPECT_EQ(readFile(folder / "alpha.19990301"), "mine");
    EXPECT_THAT(system.run({"-S", system.log("19990301").parent_path(), "alpha"}, kCheck).err,
                HasSubstr("the folder is the log directory"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1) << "no partial copy is left";
}

TEST(Check, ACopyGetsTheLogsModeOnAnyFileSystem) {
    PrintSystem system;
    Log damaged = threeJobs();
    damaged.overwrite(damaged.records()[1], "\xff");
    system.save("19990301", damaged);
    ASSERT_EQ(chmod(system.log("19990301").c_str(), 0640), 0);
    fs::create_directory(system / "saved");
    const std::string copy = system / "saved/alpha.19990301";
    ToolRun run = kCheck; // as on a file system without renameat2()
    run.failing = {copy, "renameat2:error=EINVAL"};
    system.run({"-S", system / "saved", "alpha"}, run);
    struct stat status = {};
    ASSERT_EQ(stat(copy.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST(Check, MessagesSayWhetherARecordFollowsUnsavedBytes) {
    PrintSystem system;
    Log damaged = threeJobs();
    const std::size_t begin = damaged.records()[1];
    damaged.overwrite(begin, std::string(damaged.records()[2] - begin, '\xff'));
    system.save("19990301", damaged);
    system.save("19990302", threeJobs().raw("stray"));
    fs::create_directory(system / "saved");
    const std::string messages = system.run({"-S", system / "saved", "alpha"}, kCheck).err;
    EXPECT_THAT(messages, HasSubstr("not saved; the record after them was found out of step.\n"));
    EXPECT_THAT(messages, HasSubstr("not saved; no record follows.\n"));
}

TEST(Check, AnInterruptedSaveLeavesNoFile) {
    PrintSystem system;
    Log damaged = threeJobs();
    damaged.overwrite(damaged.records()[0], "\xff");
    for (int i = 0; i < 80; ++i)
        damaged.job(jobOf({{"job-name", {std::string(20'000, 'x')}}}));
    system.save("19990301", damaged);
    const fs::path folder = system / "saved";
    fs::create_directory(folder);

    const rlimit disk{100'000, RLIM_INFINITY}, none{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &disk);
    const ToolResult full = system.run({"-S", folder, "alpha"}, kCheck);
    setrlimit(RLIMIT_FSIZE, &none);
    EXPECT_EQ(full.status, 74);
    EXPECT_THAT(full.err, HasSubstr("could not be saved as " + (folder / "alpha.19990301").string() +
                                    ": File too large.\n"));
    EXPECT_TRUE(fs::is_empty(folder)) << "after a full disk";

    Pipe messages; // a full pipe blocks the first message
    messages.fill();
    const pid_t run =
        system.start({"-S", folder, "alpha"}, {.error = messages.writer(), .program = QVLEDGER_CHECK_BINARY});
    for (int i = 0; i < 1000 && fs::is_empty(folder); ++i)
        usleep(10'000);
    EXPECT_FALSE(fs::is_empty(folder)) << "the save has not started";
    kill(run, SIGTERM);
    EXPECT_THAT(messages.drain(), Not(HasSubstr("saved as")));
    EXPECT_EQ(system.finish(run).status, 1000 + SIGTERM);
    EXPECT_TRUE(fs::is_empty(folder)) << "after a signal";
}

TEST(Check, ProgressIsDrawnAfterMessagesAndErasedAtTheEnd) {
    int terminal = -1, program = -1;
    if (openpty(&terminal, &program, nullptr, nullptr, nullptr) != 0)
        GTEST_SKIP() << "needs pseudo-terminals";
    PrintSystem system;
    system.save("19990301", threeJobs().raw("stray"));
    system.save("19990302", threeJobs());
    ToolRun slow = kCheck;
    slow.error = program;
    ASSERT_EQ(tcflow(program, TCOOFF), 0); // blocks the first message
    const pid_t run = system.start({"-S", system / "none", "alpha"}, slow);
    usleep(400'000);
    ASSERT_EQ(tcflow(program, TCOON), 0);
    EXPECT_EQ(system.finish(run).status, 74);
    close(program);
    const std::string shown = readAll(terminal);
    close(terminal);
    EXPECT_THAT(shown, HasSubstr("No such file or directory.\r\n\r19990302  log 2 of 2  "));
    EXPECT_THAT(shown, testing::ContainsRegex(" records/s *\r +\r$"));
}

TEST(Check, SetupFaultsAreReportedWithTheirPlace) {
    using In = const PrintSystem &;
    const std::tuple<const char *, std::function<void(In)>, const char *, int> cases[] = {
        {"no settings", [](In system) { fs::remove(system.root.registry()); },
         "CurrentVersion\\Environment: ", 30},
        {"QV_ROOT of another type",
         [](In system) {
             system.root.writeRegistry({{serverKey("alpha"), {}}});
             std::ofstream(system.root.registry(), std::ios::app) << "\"QV_ROOT\"=dword:1\n";
         },
         "QV_ROOT is not a string", ALA_A_INVALID_LOG_PATH_NAME},
        {"bad table", [](In system) { std::ofstream(system.root.oids() / "oids") << "# mine\n1.2\n"; },
         "oids:2: ", ALA_A_OID_ERROR},
        {"no table", [](In system) { fs::remove(system.root.oids() / "oids"); }, "oids: no such file",
         ALA_A_OID_ERROR},
        {"no log folder", [](In system) { fs::remove_all(system.root.logs()); },
         "var/acct: No such file or directory", ALA_A_INVALID_LOG_PATH_NAME},
    };
    for (const auto &[label, spoil, message, status] : cases) {
        SCOPED_TRACE(label);
        PrintSystem system;
        spoil(system);
        const ToolResult result = system.run({"alpha"}, kCheck);
        EXPECT_EQ(result.status, status);
        EXPECT_THAT(result.err, HasSubstr(message));
        EXPECT_THAT(result.out, HasSubstr("registry key\t"));
    }
}

TEST(Check, AMalformedRegistryFileIsReportedWithItsLine) {
    PrintSystem system;
    std::ofstream(system.root.registry()) << "REGEDIT4\n\nnothing\n";
    const ToolResult result = system.run({"alpha"}, kCheck);
    EXPECT_EQ(result.status, 30);
    EXPECT_THAT(result.err, HasSubstr("registry.reg:3: "));
    EXPECT_THAT(result.out, HasSubstr("registry key\t"));
}

TEST(Check, EachServerIsCheckedWithItsOwnSettings) {
    PrintSystem system;
    const SampleRoot other(system / "other");
    system.save("19990301", threeJobs().raw(std::string("\0\0\0", 3)));
    threeJobs().save(other.log("beta", "19990302"));
    system.root.writeRegistry({{serverKey("alpha"), {{"QV_ROOT", system.root.path()}}},
                               {serverKey("beta"), {{"QV_ROOT", other.path()}}},
                               {serverKey("bare"), {{"OTHER", "1"}}}});
    const ToolResult result = system.run({"alpha", "bare", "none", "beta"}, kCheck);
    EXPECT_EQ(result.status, 100) << "of the first server that could not be checked";
    EXPECT_THAT(result.err, HasSubstr("bare ended with status 100"));
    EXPECT_THAT(result.err, HasSubstr("none ended with status 30"));
    EXPECT_EQ(field(result, "alpha.19990301", "state"), "cut");
    EXPECT_EQ(field(result, "beta.19990302", "state"), "whole");
    EXPECT_EQ(system.run({"-s", "19990302", "alpha", "beta"}, kCheck).status, 29);
    EXPECT_EQ(system.run({"-e", "19990301", "beta", "alpha"}, kCheck).status, 50) << "not 29";
}

TEST(Check, CommandLineAndOutputErrorsHaveTheirStatus) {
    PrintSystem system;
    EXPECT_EQ(system.run({}, kCheck).status, 1);
    EXPECT_EQ(system.run({"-d", "alpha"}, kCheck).status, 1);
    EXPECT_EQ(system.run({"-S", "", "alpha"}, kCheck).status, 1) << "an empty folder name";
    EXPECT_EQ(system.run({"-s", "1999", "alpha"}, kCheck).status, 30);
    EXPECT_EQ(system.run({"alpha"}, kCheck).status, 29);
    EXPECT_THAT(system.run({"-h"}, kCheck).err, testing::StartsWith("Command line usage: qvledger-check "));
    EXPECT_THAT(system.run({"--help"}, kCheck).err,
                testing::StartsWith("Command line usage: qvledger-check "));
    EXPECT_EQ(system.run({"--version"}, kCheck).out, system.run({"-V"}).out);
    const qvledger::Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    system.save("19990301", threeJobs());
    EXPECT_EQ(system.run({"alpha"}, {.output = full.get(), .program = QVLEDGER_CHECK_BINARY}).status, 74);
}
