// The report file: concurrent runs, failed runs and failed writes.
#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/descriptor.h"
#include "platform/os.h"
#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"

using namespace samples;
using qvledger::Descriptor;
namespace fs = std::filesystem;

TEST(ReportFile, IsLockedAndEndsInWholeLines) {
    PrintSystem system;
    system.save("19990301", marchLog());
    const fs::path report = system / "r", link = system / "link"; // a report name of one letter
    fs::create_symlink("r", link);
    EXPECT_EQ(system.run({"-o", link, "-s", "19990302", "alpha"}).status, 29);
    EXPECT_FALSE(fs::exists(report)) << "created through the link, but removed because it is empty";
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(system.run({"-o", link, "alpha"}).status, 0);
    writeFile(report, "half a line");
    EXPECT_EQ(system.run({"-g", "-o", link, "alpha"}).status, 0);
    EXPECT_EQ(readFile(report), "half a line\nmarch\n");

    const int locked = open(report.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(OS_LockFile(locked), OS_DONE);
    const pid_t waiting = system.start({"-o", report, "alpha"}),
                ended = system.start({"-o", report, "alpha"});
    usleep(100'000);
    kill(ended, SIGTERM);
    EXPECT_EQ(system.finish(ended).status, 1000 + SIGTERM);
    EXPECT_EQ(readFile(report), "half a line\nmarch\n");
    fs::rename(report, system / "moved");
    close(locked);
    EXPECT_EQ(system.finish(waiting).status, 0);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n") << "in the file that now has the name";
}

// A shell's "1<> report" and some service managers open the report at its first byte, without O_APPEND.
TEST(ReportFile, IsAppendedToWithMessagesBetweenLines) {
    PrintSystem system;
    const fs::path report = system / "report";
    const std::string longName(600'000, 'x');
    const auto atFirstByte = [&] { return open(report.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644); };
    for (const bool byName : {false, true}) {
        SCOPED_TRACE(byName ? "-o" : "standard output");
        system.save("19990301", marchLog());
        Job damaged = jobOf({{"job-name", {longName}}});
        damaged.attribute(dotted("job-comment"), STRING, {kUnreadable});
        system.save("19990302", logOf({damaged}));
        writeFile(report, "earlier\nhalf a line");
        const Descriptor output(atFirstByte()), error(atFirstByte());
        std::vector<std::string> arguments = {"-d", "-g", "alpha"};
        if (byName)
            arguments.insert(arguments.begin(), {"-o", report});
        EXPECT_EQ(system.run(arguments, {.output = byName ? -1 : output.get(), .error = error.get()}).status,
                  0);
        EXPECT_EQ(readFile(report), "earlier\nhalf a line\nmarch\n"
                                    "Unable to read accounting information because the data appears to be "
                                    "corrupted.\n" +
                                        longName + "\n");
        EXPECT_FALSE(fs::exists(system.log("19990301")));
        EXPECT_TRUE(fs::exists(system.log("19990302")));
    }
    fs::remove(system.log("19990302"));
    for (const bool removed : {false, true}) { // is the report removed while the run waits?
        SCOPED_TRACE(removed);
        system.save("19990301", marchLog());
        writeFile(report, "");
        const int locked = open(report.c_str(), O_RDWR | O_APPEND | O_CLOEXEC), output = atFirstByte();
        ASSERT_EQ(OS_LockFile(locked), OS_DONE);
        const pid_t waiting =
            system.start({"-d", "alpha"}, {.output = output, .error = removed ? -1 : output});
        usleep(removed ? 100'000 : 1'200'000); // even after 1 s it must not print a message
        EXPECT_EQ(write(locked, "other\n", 6), 6);
        if (removed)
            fs::remove(report);
        close(locked);
        EXPECT_EQ(system.finish(waiting).err,
                  removed ? "qvledger: the report could not be written to standard output: No such file or "
                            "directory.\n"
                          : "");
        EXPECT_EQ(fs::exists(system.log("19990301")), removed);
        EXPECT_EQ(readFile(report), removed ? "" : "other\njob-name\nmarch\n");
        close(output);
    }
}

// A failed run that deleted no log removes its new report, unless another program has it open or wrote to it.
TEST(ReportFile, OfAFailedRunIsRemovedUnlessOthersUseIt) {
    const auto expectLeft = [](const char *label, bool appends, bool opens, const char *left) {
        SCOPED_TRACE(label);
        PrintSystem system;
        const fs::path report = system / "report";
        system.save("19990301", marchLog());
        system.save("19990302", marchLog());
        const int locked = open(system.log("19990302").c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(OS_LockFile(locked), OS_DONE);
        system.save("19990301", marchLog().cutTo(3));
        const pid_t run = system.start({"-d", "-o", report, "alpha"});
        while (!fs::exists(report))
            usleep(1000);
        usleep(100'000);
        const int other = opens ? open(report.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC) : -1;
        if (appends)
            writeFile(report, "other\n");
        fs::remove(system.log("19990302"));
        close(locked);
        EXPECT_EQ(system.finish(run).status, 6);
        EXPECT_EQ(fs::exists(report), left != nullptr);
        EXPECT_EQ(readFile(report), left != nullptr ? left : "");
        close(other);
    };
    expectLeft("not in use", false, false, nullptr);
    expectLeft("open elsewhere", false, true, "");
    expectLeft("with another program's lines", true, false, "other\n");
}

TEST(ReportFile, IsRefusedIfItIsALog) {
    PrintSystem system;
    for (const char *tail : {"19990301", "current"})
        system.save(tail, marchLog());
    const std::string before = readFile(system.log("current"));
    const fs::path others = system.root.log("beta", "19990301.being-deleted"),
                   text = system.root.log("beta", "20000101");
    marchLog().save(others);
    fs::create_symlink(system.log("current"), system / "link");
    fs::create_hard_link(system.log("current"), system / "second name");
    for (const fs::path &report : {system.log("current"), system / "link", system / "second name",
                                   system.log("new"), system.log("19990305"), others}) {
        const ToolResult result = system.run({"-o", report, "-e", "19990301", "alpha"});
        EXPECT_EQ(result.status, 30);
        EXPECT_EQ(result.err,
                  "Unable to open the file " + report.string() + " to append more accounting information.\n");
    }
    EXPECT_EQ(readFile(system.log("current")), before);
    EXPECT_FALSE(fs::exists(system.log("new")) || fs::exists(system.log("19990305")));
    EXPECT_EQ(readFile(others), marchLog().bytes());
    writeFile(text, "named as a log of another server, but no log\n");
    EXPECT_EQ(system.run({"-e", "19990301", "-o", text, "alpha"}).status, 0);
}

TEST(ReportFile, IsRefusedIfItIsAnUnreadableLogOrALogOnStandardOutput) {
    PrintSystem system;
    system.save("current", marchLog());
    const fs::path others = system.root.log("beta", "19990301");
    marchLog().save(others);
    // The third open(), which would read the log's start, fails as if the log could be written but not read.
    EXPECT_EQ(
        system.run({"-o", others, "alpha"}, {.failing = {others, "openat:error=EACCES:when=3+"}}).status, 30);
    EXPECT_EQ(readFile(others), marchLog().bytes());
    const Descriptor output(open(system.log("current").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    EXPECT_EQ(system.run({"alpha"}, {.output = output.get()}).status, 30);
    EXPECT_EQ(readFile(system.log("current")), marchLog().bytes());
}

TEST(ReportFile, EndsInWholeLinesWhenTheDiskIsFull) {
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
