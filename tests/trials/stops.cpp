// Stops a deleting run before each of its system calls in turn, and lets another program act there.  No
// record may be lost.
//
//     stops [STEP]      stops at every STEP-th call (default 1)
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/trials/numbered_records.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr int kSkipped = 77, kNotTraced = 125;
constexpr const char *kDays[] = {"19990301", "19990302"}; // days of the logs of records 1 to 3, and 4 to 6
constexpr int kFresh = 7; // first record number of the longer log of kReplace and kOverwrite

namespace {

enum Act { kAgain, kElsewhere, kFindsNone, kReplace, kOverwrite, kRemoveReport, kKill, kTerminate, kActs };
constexpr const char *kLabels[kActs] = {"a second run",
                                        "a second run with another report",
                                        "a run that finds no log",
                                        "the log replaced",
                                        "the log overwritten",
                                        "the report removed",
                                        "SIGKILL",
                                        "SIGTERM"};

class Stops {
public:
    // Lets another program act before a call of a run.  Returns false if the run has fewer calls.
    bool stopAt(Act act, unsigned number);
    unsigned stops = 0, faults = 0;
    bool mayTrace = true;

private:
    void act(Act chosen, pid_t run, bool deletesNext);
    void start(const std::vector<std::string> &arguments);
    Numbers inLogs(const char *ending) const;
    void judge(Act act, unsigned number, const char *when);

    PrintSystem system_;
    const std::string report_ = system_ / "report", other_ = system_ / "other";
    pid_t beside_ = 0;
    Numbers wanted_;
};

} // namespace

Numbers Stops::inLogs(const char *ending) const {
    Numbers found;
    for (const auto &entry : fs::directory_iterator(system_.root.logs()))
        if (entry.path().string().ends_with(ending))
            found.merge(numbersIn(readFile(entry.path())));
    return found;
}

// Starts another run and waits for its end, but only about 30 ms: the new run may wait for the stopped one.
void Stops::start(const std::vector<std::string> &arguments) {
    beside_ = system_.start(arguments);
    for (int waits = 0; waits < 30 && waitpid(beside_, nullptr, WNOHANG | WNOWAIT) == 0; ++waits)
        usleep(1000);
}

// Acts as the other program.  Records that this program destroys are no longer wanted.
void Stops::act(Act act, pid_t run, bool deletesNext) {
    const fs::path log = system_.log(kDays[0]);
    const auto drop = [&](const Numbers &numbers) {
        std::erase_if(wanted_, [&](int number) { return numbers.contains(number); });
    };
    if (act == kAgain || act == kElsewhere)
        start({"-d", "-o", act == kAgain ? report_ : other_, "alpha"});
    if (act == kFindsNone)
        start({"-s", "20300101", "-o", report_, "alpha"});
    if (act == kReplace) {
        drop(numbersIn(readFile(log)));
        writeFile(system_ / "fresh", numberedLog(kFresh, kEnd));
        fs::rename(system_ / "fresh", log);
        wanted_.merge(numbersIn(numberedLog(kFresh, kEnd)));
    }
    // Overwrites nothing if the log is deleted or locked against writers.
    if (const int fd = act == kOverwrite ? open(log.c_str(), O_WRONLY | O_NONBLOCK) : -1; fd != -1) {
        drop(numbersIn(readFile(log)));
        const Bytes fresh = numberedLog(kFresh, kEnd);
        if (write(fd, fresh.data(), fresh.size()) == static_cast<ssize_t>(fresh.size()))
            wanted_.merge(numbersIn(fresh));
        close(fd);
    }
    // Removing the report destroys the lines of deleted logs.  The lines of the log that the next call
    // deletes are also destroyed, because the run has already checked that the report exists.
    if (act == kRemoveReport) {
        const Numbers left = inLogs("");
        std::erase_if(wanted_, [&](int number) { return !left.contains(number); });
        if (deletesNext)
            drop(inLogs(".being-deleted"));
        fs::remove(report_);
    }
    if (act == kKill || act == kTerminate)
        kill(run, act == kKill ? SIGKILL : SIGTERM);
}

void Stops::judge(Act act, unsigned number, const char *when) {
    const std::multiset<int> lines = linesIn(readFile(report_) + readFile(other_));
    Numbers kept(lines.begin(), lines.end());
    const bool twice = kept.size() != lines.size();
    kept.merge(inLogs(""));
    const bool isComplete = std::includes(kept.begin(), kept.end(), wanted_.begin(), wanted_.end());
    const bool repeats = twice && act <= kFindsNone; // after the other acts a kept log is reported again
    if (isComplete && !repeats)
        return;
    ++faults;
    std::printf("FAULT: %s before call %u, %s: %s\n", kLabels[act], number, when,
                isComplete ? "a line is repeated" : "a record is lost");
}

// Lets a stopped run continue to its number-th system call.  Returns the SYS_ code; -1 if the run ends first.
static long runToCall(pid_t run, unsigned number, int *status) {
    unsigned calls = 0;
    waitpid(run, status, 0);
    ptrace(PTRACE_SETOPTIONS, run, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    while (!WIFEXITED(*status) && !WIFSIGNALED(*status)) {
        __ptrace_syscall_info info = {};
        if (WSTOPSIG(*status) == (SIGTRAP | 0x80) &&
            ptrace(PTRACE_GET_SYSCALL_INFO, run, sizeof info, &info) > 0 &&
            info.op == PTRACE_SYSCALL_INFO_ENTRY && ++calls == number)
            return static_cast<long>(info.entry.nr);
        ptrace(PTRACE_SYSCALL, run, nullptr, nullptr);
        waitpid(run, status, 0);
    }
    return -1;
}

bool Stops::stopAt(Act chosen, unsigned number) {
    for (const fs::path &old : {fs::path(report_), fs::path(other_), system_.root.logs()})
        fs::remove_all(old);
    fs::create_directory(system_.root.logs());
    for (int day = 0; day < 2; ++day)
        writeFile(system_.log(kDays[day]), numberedLog(1 + 3 * day, 4 + 3 * day));
    wanted_ = {1, 2, 3, 4, 5, 6};
    beside_ = 0;
    const pid_t run = system_.start({"-d", "-o", report_, "alpha"}, {.traced = true});
    int status = 0;
    const long call = runToCall(run, number, &status);
    mayTrace = !WIFEXITED(status) || WEXITSTATUS(status) != kNotTraced;
    if (call == -1)
        return false;
    ++stops;
    act(chosen, run, call == SYS_unlink);
    ptrace(PTRACE_DETACH, run, nullptr, nullptr);
    const int ended = system_.finish(run).status;
    if (beside_ != 0)
        system_.finish(beside_);
    if (ended > 100 && ended != 1000 + (chosen == kKill ? SIGKILL : SIGTERM) && ++faults != 0)
        std::printf("FAULT: %s before call %u: status %d\n", kLabels[chosen], number, ended);
    judge(chosen, number, "after the run");
    system_.run({"-d", "-o", report_, "alpha"});
    judge(chosen, number, "after one more run");
    return true;
}

int main(int argc, char **argv) {
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // LeakSanitizer fails in a traced program
    const int step = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 1;
    Stops trial;
    for (int act = 0; act < kActs; ++act)
        for (unsigned number = 1; trial.stopAt(Act(act), number); number += static_cast<unsigned>(step)) {
        }
    std::printf("%u stops, %u faults%s\n", trial.stops, trial.faults,
                trial.mayTrace ? "" : "; skipped: tracing is not permitted");
    return !trial.mayTrace ? kSkipped : trial.faults == 0 ? 0 : 1;
}
