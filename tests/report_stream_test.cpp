// What becomes of the report file beside other runs, and when it cannot be written.
#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/os.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

TEST(ReportFile, IsHeldAndEndsInWholeLines) {
    PrintSystem system;
    system.save("19990301", marchLog());
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

TEST(ReportFile, ThatIsALogIsRefused) {
    PrintSystem system;
    for (const char *tail : {"19990301", "current"})
        system.save(tail, marchLog());
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

TEST(ReportFile, KeepsItsWholeLinesWhenTheDiskIsFull) {
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
