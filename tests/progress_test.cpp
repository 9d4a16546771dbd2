// The progress line of a long run, seen through a pseudo-terminal.
#include <gtest/gtest.h>

#include <algorithm>

#include <fcntl.h>
#include <pty.h>
#include <sys/file.h>
#include <unistd.h>

#include "tests/support/pipe.h"
#include "tests/support/run_tool.h"

using namespace samples;

struct SlowRun {
    std::string report, terminal;
};

// Runs the tool, which waits 0.6 s for its locked first log and cannot read its last log.  The report is a
// file or a pipe.
static SlowRun runSlowly(bool toFile, const ToolRun &slowRun = {}) {
    PrintSystem system;
    system.save("19990301", logOf(std::vector<Job>(60, jobOf({{"job-name", {"x"}}}))));
    system.save("19990302", logOf({}).cutTo(10));
    const int locked = open(system.log("19990301").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(flock(locked, LOCK_EX), 0);
    int terminal = -1, program = -1;
    EXPECT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
    Pipe report;
    ToolRun settings = slowRun;
    settings.output = toFile ? -1 : report.writer();
    settings.error = program;
    const pid_t tool = system.start({"-d", "alpha"}, settings);
    usleep(600'000);
    close(locked);
    SlowRun run = {report.drain(), ""};
    const ToolResult result = system.finish(tool);
    if (toFile)
        run.report = result.out;
    close(program);
    run.terminal = readAll(terminal);
    close(terminal);
    return run;
}

TEST(Progress, IsErasedBeforeMessagesAndAbsentIfTheReportIsAPipe) {
    if (access("/dev/ptmx", R_OK) != 0)
        GTEST_SKIP() << "needs pseudo-terminals";
    const std::string message = "Unable to read the accounting file.\r\n";
    const SlowRun run = runSlowly(true);
    EXPECT_TRUE(run.terminal.starts_with("\r19990301  log 1 of 2  ")) << run.terminal;
    const std::size_t last = run.terminal.rfind("\r19990301"), end = run.terminal.rfind(" records/s") + 10;
    const std::string erased = "\r" + std::string(end - last - 1, ' ') + "\r";
    EXPECT_EQ(run.terminal.substr(end), erased + message);
    EXPECT_LE(std::count(run.terminal.begin(), run.terminal.end(), '\r'), 5) << "not drawn for every record";
    EXPECT_EQ(run.report.find('\r'), std::string::npos);
    EXPECT_EQ(run.report.size(), 9 + 60 * 2U);
    EXPECT_EQ(runSlowly(true, {.environment = {{"QV_PROGRESS", "0"}}}).terminal, message);
    const SlowRun piped = runSlowly(false);
    EXPECT_EQ(piped.terminal, message) << "the pipe's reader may write to the terminal";
    EXPECT_EQ(piped.report, run.report);
}
