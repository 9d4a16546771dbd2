// Logs that are written, renamed, reported and deleted at the same time: no record is lost, cut or garbled.
//
// A round is a writer's process and the tool's runs while it writes.  Its number is the seed of all its
// choices.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/run_tool.h"
#include "tests/support/scripted_os.h"
#include "tool/run.h"
#include "trials/live.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr int kMostRecords = 40;
constexpr int kWriteFailed = 2, kNameLost = 3; // a writer's exit status

// ---- The writer, in a process of its own ----

static int openNew(const fs::path &in_path) {
    const int fd = open(in_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND, 0644);
    return fd != -1 ? fd : (_exit(kWriteFailed), -1);
}

static void append(int in_fd, std::string_view in_bytes, std::mt19937 &inoutp_random) {
    while (!in_bytes.empty()) {
        const std::size_t most = inoutp_random() % 3 == 0 ? 9 : 6000;
        const std::string_view piece = in_bytes.substr(0, 1 + inoutp_random() % most);
        if (write(in_fd, piece.data(), piece.size()) != static_cast<ssize_t>(piece.size()))
            _exit(kWriteFailed);
        in_bytes.remove_prefix(piece.size());
        if (inoutp_random() % 3 == 0)
            usleep(static_cast<useconds_t>(inoutp_random() % 2000));
    }
}

static void closeNamed(int in_fd) {
    struct stat status;
    if (fstat(in_fd, &status) != 0 || status.st_nlink == 0)
        _exit(kNameLost);
    close(in_fd);
}

struct Writing {
    fs::path current, dated;
    Bytes old, fresh; // whole logs
};

[[noreturn]] static void writeLogs(const Writing &in_plan, std::mt19937 in_random) {
    const int old = openNew(in_plan.current);
    const std::string_view bytes = in_plan.old;
    const std::size_t renamedAt = in_random() % bytes.size();
    append(old, bytes.substr(0, renamedAt), in_random);
    if (rename(in_plan.current.c_str(), in_plan.dated.c_str()) != 0)
        _exit(kWriteFailed);
    const int fresh = openNew(in_plan.current);
    append(old, bytes.substr(renamedAt), in_random);
    const std::string_view freshBytes = in_plan.fresh;
    append(fresh, freshBytes.substr(0, freshBytes.size() / 2), in_random);
    closeNamed(old);
    append(fresh, freshBytes.substr(freshBytes.size() / 2), in_random);
    closeNamed(fresh);
    _exit(0);
}

// ---- The tool, in processes that are quick to start ----

class LiveLog : public testing::Test {
protected:
    LiveLog() {
        setenv("QV_REGISTRY", system.root.registry().c_str(), 1);
        setenv("QV_LOG", (system / "log").c_str(), 1);
        setenv("TZ", "UTC", 1);
    }
    ~LiveLog() override {
        for (const char *name : {"QV_REGISTRY", "QV_LOG", "TZ"})
            unsetenv(name);
    }

    void round(unsigned in_number);
    pid_t startTool() const;
    void runTool(std::mt19937 &inoutp_random, bool in_mayKill);
    void take(std::string_view in_report, bool in_killed);

    const PrintSystem system;
    const std::string logs = system.root.logs(), oids = system.root.oids(), report = system / "report";
    // Of the round:
    bool deletes = false, kills = false;
    bool afterMidnight = false; // what was written today is of a past day, the current log as well
    int split = 0;              // number of the new log's first record
    std::set<int> reported;
    // Of all rounds:
    int runs = 0, killed = 0, deletedWhileWriting = 0;
    unsigned usualTime = 1000; // microseconds of a run that was let be
};

static int tomorrow(STF_l__hdr *, GEN_generalizedTime **outpp_time, std::int32_t) {
    const std::time_t when = std::time(nullptr) + 24 * 60 * 60;
    std::tm day = {};
    gmtime_r(&when, &day);
    __real_GENU_GetCurrentTime(nullptr, outpp_time, 0);
    (*outpp_time)->year = static_cast<std::int16_t>(day.tm_year + 1900);
    (*outpp_time)->month = static_cast<std::int16_t>(day.tm_mon + 1);
    (*outpp_time)->day = static_cast<std::int16_t>(day.tm_mday);
    return 0;
}

pid_t LiveLog::startTool() const {
    if (const pid_t pid = fork(); pid != 0)
        return pid;
    alarm(20);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    OS_PrepareProcess();
    std::optional<Scripted<decltype(::GENU_GetCurrentTime)>> clock;
    if (afterMidnight)
        clock.emplace(script::GENU_GetCurrentTime, tomorrow);
    _exit(run({.serverName = "alpha",
               .ofile = report.c_str(),
               .acctPath2 = logs.c_str(),
               .oidPath = oids.c_str(),
               .dflg = deletes ? 1 : 0}));
}

// One run and what it appended to the report.
void LiveLog::runTool(std::mt19937 &inoutp_random, bool in_mayKill) {
    const std::size_t before = readFile(report).size();
    const auto begin = std::chrono::steady_clock::now();
    const pid_t tool = startTool();
    ASSERT_GT(tool, 0);
    if (in_mayKill) {
        usleep(static_cast<useconds_t>(inoutp_random() % (usualTime + usualTime / 4)));
        kill(tool, SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(tool, &status, 0), tool);
    const auto taken = std::chrono::steady_clock::now() - begin;
    const bool wasKilled = WIFSIGNALED(status);
    ASSERT_TRUE(!wasKilled || (in_mayKill && WTERMSIG(status) == SIGKILL)) << "ended by " << WTERMSIG(status);
    runs++;
    killed += wasKilled ? 1 : 0;
    if (!in_mayKill)
        usualTime = 1 + static_cast<unsigned>(taken / std::chrono::microseconds(1));
    const std::string now = readFile(report); // shorter if a run without records removed it
    take(std::string_view(now).substr(std::min(before, now.size())), wasKilled);
}

void LiveLog::take(std::string_view in_report, bool in_killed) {
    int expected = 0;
    for (std::size_t end; (end = in_report.find('\n')) != std::string_view::npos;
         in_report.remove_prefix(end + 1)) {
        const std::string line(in_report.substr(0, end));
        if (line == kHeader || line.empty()) // the end of what a killed run left open
            continue;
        const int number = std::atoi(line.c_str());
        ASSERT_TRUE(number == expected || number == split || number == 0) << "no record between: " << number;
        ASSERT_EQ(line, std::to_string(number) + '\t' + commentOf(number));
        reported.insert(number);
        expected = number + 1;
    }
    ASSERT_TRUE(in_killed || in_report.empty()) << "the report ends in a part of a line: " << in_report;
}

void LiveLog::round(unsigned in_number) {
    std::mt19937 random(in_number);
    deletes = in_number % 3 != 0;
    kills = in_number % 3 == 2;
    afterMidnight = random() % 2 == 0;
    split = 1 + static_cast<int>(random() % (kMostRecords - 1));
    reported.clear();
    fs::remove(report);
    fs::remove_all(logs);
    fs::create_directory(logs);
    const std::time_t now = std::time(nullptr), day = 24 * 60 * 60;
    const std::time_t oldDay = afterMidnight ? now : now - day;
    char tail[16];
    std::tm parts = {};
    std::strftime(tail, sizeof tail, "%Y%m%d", gmtime_r(&oldDay, &parts));
    const Bytes header = Log().bytes();
    const Writing plan{system.log("current"), system.log(tail), header + recordsOf(0, split),
                       header + recordsOf(split, kMostRecords)};

    std::fflush(nullptr);
    const pid_t writer = fork();
    if (writer == 0)
        writeLogs(plan, random);
    ASSERT_GT(writer, 0);
    int status = 0;
    while (waitpid(writer, &status, WNOHANG) == 0)
        runTool(random, kills);
    ASSERT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 0)
        << (WEXITSTATUS(status) == kNameLost ? "a log that was open for writing was deleted"
                                             : "writer failed");
    if (deletes && !fs::exists(plan.dated))
        deletedWhileWriting++;
    for (int number = 0; number < split && !fs::exists(plan.dated); ++number)
        ASSERT_TRUE(reported.contains(number)) << "record " << number << " is lost";
    ASSERT_EQ(readFile(plan.current), plan.fresh);

    runTool(random, false);
    ASSERT_EQ(fs::exists(plan.dated), !deletes);
    ASSERT_TRUE(deletes || readFile(plan.dated) == plan.old);
    // Of two logs of one date the one that has its name is taken.
    ASSERT_EQ(reported.size(), static_cast<std::size_t>(afterMidnight && !deletes ? split : kMostRecords));
}

TEST_F(LiveLog, NoRecordIsLostCutOrGarbled) {
    const int rounds = roundsOr(200);
    for (int number = 0; number < rounds && !HasFatalFailure(); ++number) {
        SCOPED_TRACE("round " + std::to_string(number));
        round(static_cast<unsigned>(number));
    }
    int heldByWriter = 0;
    std::istringstream entries(readFile(system / "log"));
    for (std::string line; std::getline(entries, line);)
        heldByWriter += line.find("another program has it open for writing") != std::string::npos ? 1 : 0;
    std::printf("%d rounds, %d runs, %d of them killed; kept for its writer %d times; "
                "deleted while the next one was written %d times\n",
                rounds, runs, killed, heldByWriter, deletedWhileWriting);
}
