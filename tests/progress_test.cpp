// The progress line of a long run, seen through a pseudo-terminal.
#include <gtest/gtest.h>

#include <chrono>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include "tests/support/run_tool.h"

using namespace samples;
using Clock = std::chrono::steady_clock;

static std::string readAll(int fd) {
    std::string all;
    char bytes[4096];
    for (ssize_t got; (got = read(fd, bytes, sizeof bytes)) > 0;)
        all.append(bytes, static_cast<std::size_t>(got));
    return all;
}

struct SlowRun {
    std::string report, terminal;
    double seconds = 0;
};

// A run whose report is taken so slowly that it lasts for most of a second, and whose last log cannot be
// read.
static SlowRun runSlowly(const std::vector<std::string> &arguments, const ToolRun &givenRun = {}) {
    PrintSystem system;
    std::vector<Job> jobs(60, jobOf({{"job-name", {std::string(20'000, 'x')}}}));
    system.save("19990301", logOf(jobs));
    system.save("19990302", logOf({}).cutTo(10));
    int terminal = -1, program = -1, report[2];
    EXPECT_EQ(openpty(&terminal, &program, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(pipe2(report, O_CLOEXEC), 0);
    ToolRun settings = givenRun;
    settings.output = report[1];
    settings.error = program;
    const auto start = Clock::now();
    const pid_t tool = system.start(arguments, settings);
    close(report[1]);
    SlowRun run;
    std::string bytes(100'000, '\0');
    for (ssize_t got; (got = read(report[0], bytes.data(), bytes.size())) > 0; usleep(30'000))
        run.report.append(bytes, 0, static_cast<std::size_t>(got));
    system.finish(tool);
    run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    close(report[0]);
    close(program);
    run.terminal = readAll(terminal);
    close(terminal);
    return run;
}

TEST(Progress, IsDrawnAtTimesAndErasedBeforeAMessageAndAtTheEnd) {
    int terminal = -1, program = -1;
    if (openpty(&terminal, &program, nullptr, nullptr, nullptr) != 0)
        GTEST_SKIP() << "needs pseudo-terminals";
    close(terminal);
    close(program);
    const std::string message = "Unable to read the accounting file.\r\n", erased = "\r\033[K";
    const SlowRun run = runSlowly({"alpha"});
    int drawn = 0;
    for (std::size_t at = 0; (at = run.terminal.find("\r19990301  log 1 of 2  ", at)) != run.terminal.npos;
         at++)
        drawn++;
    EXPECT_GE(drawn, 1) << run.terminal;
    EXPECT_LE(drawn, 1 + run.seconds * 4) << "four times a second at most";
    EXPECT_TRUE(run.terminal.ends_with(" records/s\033[K" + erased + message)) << run.terminal;
    EXPECT_EQ(run.report.find('\033'), std::string::npos);
    EXPECT_EQ(run.report.size(), 9 + 60 * 20'001U);
    EXPECT_EQ(runSlowly({"alpha"}, {.environment = {{"QV_PROGRESS", "0"}}}).terminal, message);
}
