// Stops a deleting run in front of each of its system calls in turn, and lets another program act there.
// Whatever the moment, no record may be lost.
//
//     stops [STEP]      stops at each STEP-th call (1)
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/run_tool.h"
#include "trials/tracing.h"

using namespace samples;
namespace fs = std::filesystem;
using Numbers = std::set<int>;

constexpr int kSkipped = 77;                              // where nobody may trace
constexpr const char *kDays[] = {"19990301", "19990302"}; // of records 1 to 3, and 4 to 6
constexpr int kFresh = 7;                                 // first of three records of another log

static Bytes logFrom(int in_first) {
    Log log;
    for (int number = in_first; number < in_first + 3; ++number)
        log.job(jobOf({{"job-name", {"record-" + std::to_string(number)}}}));
    return log.bytes();
}

static Numbers numbersIn(const std::string &in_bytes) {
    Numbers found;
    for (int number = 1; number < kFresh + 3; ++number)
        if (in_bytes.find("record-" + std::to_string(number)) != in_bytes.npos)
            found.insert(number);
    return found;
}

namespace {

class Stops {
public:
    using Act = void (Stops::*)(pid_t in_run, long in_call);
    struct Case {
        const char *label;
        Act act;
        bool mayRepeat; // a log that stays, or whose run was killed, is reported again
    };

    void runAgain(pid_t, long) { start({"-d", "-o", report, "alpha"}); }
    void runElsewhere(pid_t, long) { start({"-d", "-o", other, "alpha"}); }
    void runInVain(pid_t, long) { start({"-s", "20300101", "-o", report, "alpha"}); }
    void replaceLog(pid_t, long);
    void overwriteLog(pid_t, long);
    void removeReport(pid_t, long in_call);
    void killRun(pid_t in_run, long) { kill(in_run, SIGKILL); }
    void endRun(pid_t in_run, long) { kill(in_run, SIGTERM); }

    bool stopAt(const Case &in_case, unsigned in_number);
    unsigned stops = 0, faults = 0;

private:
    void start(const std::vector<std::string> &in_arguments);
    Numbers inLogs() const;
    Numbers inReports(bool *outp_twice) const;
    void drop(const Numbers &in_numbers);
    void judge(const Case &in_case, unsigned in_number, long in_call, const char *in_when);

    PrintSystem system;
    const std::string report = system / "report", other = system / "other";
    pid_t beside = 0;
    Numbers wanted;
};

} // namespace

// Another run, for as long as it is not held up by the stopped one.
void Stops::start(const std::vector<std::string> &in_arguments) {
    beside = system.start(in_arguments);
    for (int waits = 0; waits < 30 && waitpid(beside, nullptr, WNOHANG | WNOWAIT) == 0; ++waits)
        usleep(1000);
}

Numbers Stops::inLogs() const {
    Numbers found;
    for (const auto &entry : fs::directory_iterator(system.root.logs()))
        found.merge(numbersIn(readFile(entry.path())));
    return found;
}

Numbers Stops::inReports(bool *outp_twice) const {
    Numbers found;
    std::istringstream lines(readFile(report) + readFile(other));
    for (std::string line; std::getline(lines, line);)
        for (const int number : numbersIn(line))
            if (line == "record-" + std::to_string(number))
                *outp_twice |= !found.insert(number).second;
    return found;
}

// What the other program destroyed itself is not the run's to keep.
void Stops::drop(const Numbers &in_numbers) {
    for (const int number : in_numbers)
        wanted.erase(number);
}

void Stops::replaceLog(pid_t, long) {
    drop(numbersIn(readFile(system.log(kDays[0]))));
    writeFile(system / "fresh", logFrom(kFresh));
    fs::rename(system / "fresh", system.log(kDays[0]));
    wanted.merge(numbersIn(logFrom(kFresh)));
}

void Stops::overwriteLog(pid_t, long) {
    const int fd = open(system.log(kDays[0]).c_str(), O_WRONLY | O_NONBLOCK);
    if (fd == -1)
        return; // it is gone, or held against writers
    drop(numbersIn(readFile(system.log(kDays[0]))));
    const Bytes fresh = logFrom(kFresh);
    if (pwrite(fd, fresh.data(), fresh.size(), 0) == static_cast<ssize_t>(fresh.size()))
        wanted.merge(numbersIn(fresh));
    close(fd);
}

// The lines of logs that are gone already go with it; so do those of the log whose deletion is the next call,
// for nothing can be asked and done in one.
void Stops::removeReport(pid_t, long in_call) {
    Numbers safe = inLogs();
    if (in_call == SYS_unlink)
        for (const auto &entry : fs::directory_iterator(system.root.logs()))
            if (entry.path().extension() == ".being-deleted")
                for (const int number : numbersIn(readFile(entry.path())))
                    safe.erase(number);
    std::erase_if(wanted, [&](int number) { return !safe.contains(number); });
    fs::remove(report);
}

void Stops::judge(const Case &in_case, unsigned in_number, long in_call, const char *in_when) {
    bool twice = false;
    Numbers kept = inReports(&twice);
    kept.merge(inLogs());
    std::string wrong;
    for (const int number : wanted)
        if (!kept.contains(number))
            wrong += " record " + std::to_string(number) + " is lost;";
    if (twice && !in_case.mayRepeat)
        wrong += " a line stands twice;";
    if (wrong.empty())
        return;
    ++faults;
    std::printf("FAULT: %s in front of call %u (number %ld), %s:%s\n", in_case.label, in_number, in_call,
                in_when, wrong.c_str());
}

// False when the run has fewer calls.
bool Stops::stopAt(const Case &in_case, unsigned in_number) {
    fs::remove(report);
    fs::remove(other);
    fs::remove_all(system.root.logs());
    fs::create_directory(system.root.logs());
    for (int day = 0; day < 2; ++day)
        writeFile(system.log(kDays[day]), logFrom(1 + 3 * day));
    wanted = {1, 2, 3, 4, 5, 6};
    beside = 0;
    const pid_t run = system.start({"-d", "-o", report, "alpha"}, {.traced = true});
    const long call = runToCall(run, in_number);
    if (call == kEnded)
        return false;
    ++stops;
    (this->*in_case.act)(run, call);
    ptrace(PTRACE_DETACH, run, nullptr, nullptr);
    const int status = system.finish(run).status;
    if (beside != 0)
        system.finish(beside);
    if (status > 100 && status != 1000 + SIGKILL && status != 1000 + SIGTERM && ++faults != 0)
        std::printf("FAULT: %s in front of call %u: status %d\n", in_case.label, in_number, status);
    judge(in_case, in_number, call, "then");
    system.run({"-d", "-o", report, "alpha"});
    judge(in_case, in_number, call, "after one more run");
    return true;
}

int main(int argc, char **argv) {
    if (!canTrace()) {
        std::puts("skipped: no process may be traced here");
        return kSkipped;
    }
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // it cannot look into a traced program
    const int step = argc > 1 ? std::atoi(argv[1]) : 1;
    constexpr Stops::Case kCases[] = {{"a second run", &Stops::runAgain, false},
                                      {"a second run with another report", &Stops::runElsewhere, false},
                                      {"a second run that finds nothing", &Stops::runInVain, false},
                                      {"another log in its place", &Stops::replaceLog, true},
                                      {"the log overwritten", &Stops::overwriteLog, true},
                                      {"the report removed", &Stops::removeReport, true},
                                      {"a kill", &Stops::killRun, true},
                                      {"a request to end", &Stops::endRun, true}};
    Stops trial;
    for (const Stops::Case &tried : kCases)
        for (unsigned number = 1; trial.stopAt(tried, number);
             number += static_cast<unsigned>(std::max(step, 1))) {
        }
    std::printf("%u stops, %u faults\n", trial.stops, trial.faults);
    return trial.faults == 0 ? 0 : 1;
}
