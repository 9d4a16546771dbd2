// Several runs at once, on one server or two, with one report or several, while other programs, signals and a
// full disk come between: every record is in a whole line of a report or in a log.
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "trials/live.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr int kLogs = 6;         // of a server
constexpr int kMostRecords = 25; // of a log
constexpr int kFresh = 1000;     // number of the first record of a log that takes another one's place

namespace {

enum class Trouble { None, Kills, Signals, FullDisk, ReportRemoved, LogsReplaced };

struct Kind {
    const char *label;
    int servers;
    int reports;
    bool byShell; // the report is standard output, appended to
    Trouble trouble;
};

class Crowd : public testing::TestWithParam<Kind> {
protected:
    Crowd();
    ~Crowd() override;
    void round(unsigned in_number);
    pid_t startRun(const std::string &in_server, const fs::path &in_report, bool in_inVain);
    void trouble(const std::vector<pid_t> &in_runs);
    void check(bool in_mayTear);

    PrintSystem system;
    const Kind kind = GetParam();
    const fs::path folder = system / "reports";
    std::mt19937 random;
    std::set<int> wanted;
    bool mounted = false;
};

} // namespace

static const char *const kServers[] = {"alpha", "beta"};

static std::string dayOf(int in_log) {
    return "1999030" + std::to_string(1 + in_log);
}

Crowd::Crowd() {
    fs::create_directory(folder);
    mounted = kind.trouble == Trouble::FullDisk && geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
              mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
              mount("none", folder.c_str(), "tmpfs", 0, "size=256k") == 0;
}

Crowd::~Crowd() {
    if (mounted)
        umount(folder.c_str());
}

pid_t Crowd::startRun(const std::string &in_server, const fs::path &in_report, bool in_inVain) {
    std::vector<std::string> arguments = {"-d", "-s", in_inVain ? "20300101" : "19990101"};
    if (!kind.byShell)
        arguments.insert(arguments.end(), {"-o", in_report});
    arguments.push_back(in_server);
    const int output =
        kind.byShell ? open(in_report.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644) : -1;
    const bool limited = kind.trouble == Trouble::FullDisk && !mounted;
    const rlimit limit = {limited ? 60'000 + random() % 60'000 : RLIM_INFINITY, RLIM_INFINITY};
    const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const pid_t run = system.start(arguments, {.environment = {{"QV_LOG", "none"}}, .output = output});
    setrlimit(RLIMIT_FSIZE, &none);
    close(output);
    return run;
}

void Crowd::trouble(const std::vector<pid_t> &in_runs) {
    constexpr int kAsked[] = {SIGINT, SIGTERM, SIGHUP};
    usleep(static_cast<useconds_t>(random() % 12'000));
    const auto log = [&] { return system.root.log(kServers[0], dayOf(static_cast<int>(random() % kLogs))); };
    switch (kind.trouble) {
    case Trouble::Kills:
    case Trouble::Signals:
        for (const pid_t run : in_runs)
            if (random() % 2 == 0)
                kill(run, kind.trouble == Trouble::Kills ? SIGKILL : kAsked[random() % 3]);
        break;
    case Trouble::ReportRemoved:
        // What is written from here on is in no report.
        std::rename((folder / "0").c_str(), (system / "gone").c_str());
        writeFile(folder / "removed", readFile(system / "gone"));
        break;
    case Trouble::LogsReplaced: {
        Log(logOf(kFresh, kFresh + 5)).save(system / "fresh");
        const fs::path replaced = log();
        std::error_code gone;
        fs::create_hard_link(replaced, system / "old", gone); // what the replacement destroys
        fs::rename(system / "fresh", replaced);
        for (int number = kFresh; number < kFresh + 5; ++number)
            wanted.insert(number);
        break;
    }
    default:
        break;
    }
}

// Every record that is wanted stands in a log or in a whole line; no line stands twice in one report, unless
// a log had to stay for a run's early end.
void Crowd::check(bool in_mayRepeat) {
    std::set<int> found;
    for (const auto &entry : fs::directory_iterator(folder)) {
        std::map<std::string, int> seen;
        std::istringstream lines(readFile(entry.path()));
        for (std::string line; std::getline(lines, line); ++seen[line])
            if (const int number = std::atoi(line.c_str()); number != 0 && line == lineOf(number)) {
                found.insert(number);
                ASSERT_TRUE(seen[line] == 0 || in_mayRepeat) << number << " stands twice in " << entry.path();
            } else if (kind.trouble != Trouble::Kills && entry.path().filename() != "removed") {
                ASSERT_EQ(line, kHeader) << "in " << entry.path();
            }
    }
    Bytes logs = readFile(system / "old");
    for (const auto &entry : fs::directory_iterator(system.root.logs()))
        logs += readFile(entry.path());
    for (const int number : wanted)
        ASSERT_TRUE(found.contains(number) || logs.find(recordsOf(number, number + 1)) != logs.npos)
            << "record " << number << " is lost";
}

void Crowd::round(unsigned in_number) {
    random.seed(in_number);
    wanted.clear();
    fs::remove(system / "old");
    for (const fs::path &path : {fs::path(system.root.logs()), folder})
        for (const auto &entry : fs::directory_iterator(path))
            fs::remove_all(entry.path());
    int next = 1;
    for (int server = 0; server < kind.servers; ++server)
        for (int log = 0; log < kLogs; ++log) {
            const int end = next + 1 + static_cast<int>(random() % kMostRecords);
            logOf(next, end).save(system.root.log(kServers[server], dayOf(log)));
            for (; next < end; ++next)
                wanted.insert(next);
        }
    if (mounted)
        writeFile(folder / "filler", Bytes(random() % 250'000, '\n'));
    std::vector<pid_t> runs;
    for (int count = 2 + static_cast<int>(random() % 5), run = 0; run < count; ++run) {
        runs.push_back(startRun(kServers[run % kind.servers], folder / std::to_string(run % kind.reports),
                                random() % 6 == 0));
        usleep(static_cast<useconds_t>(random() % 3000));
    }
    trouble(runs);
    for (const pid_t run : runs) {
        int status = 0;
        ASSERT_EQ(waitpid(run, &status, 0), run);
        const bool asked = kind.trouble == Trouble::Kills || kind.trouble == Trouble::Signals;
        ASSERT_TRUE(WIFEXITED(status) || asked) << "ended by " << WTERMSIG(status);
    }
    const bool mayRepeat = kind.trouble != Trouble::None;
    fs::remove(folder / "filler");
    check(mayRepeat);
    for (int server = 0; server < kind.servers && !HasFatalFailure(); ++server) {
        int status = 0;
        const pid_t last = startRun(kServers[server], folder / "0", false);
        ASSERT_EQ(waitpid(last, &status, 0), last);
    }
    check(mayRepeat);
}

TEST_P(Crowd, NothingIsLostOrTorn) {
    const int rounds = roundsOr(15);
    for (int number = 0; number < rounds && !HasFatalFailure(); ++number) {
        SCOPED_TRACE("round " + std::to_string(number));
        round(static_cast<unsigned>(number));
    }
}

INSTANTIATE_TEST_SUITE_P(Rounds, Crowd,
                         testing::Values(Kind{"OneServerOneReport", 1, 1, false, Trouble::None},
                                         Kind{"OneServerSeveralReports", 1, 3, false, Trouble::None},
                                         Kind{"TwoServersOneReport", 2, 1, false, Trouble::None},
                                         Kind{"AppendedByTheShell", 2, 2, true, Trouble::None},
                                         Kind{"Killed", 2, 1, false, Trouble::Kills},
                                         Kind{"AskedToEnd", 2, 2, true, Trouble::Signals},
                                         Kind{"FullDisk", 2, 2, true, Trouble::FullDisk},
                                         Kind{"ReportRemoved", 1, 1, false, Trouble::ReportRemoved},
                                         Kind{"LogsReplaced", 1, 2, false, Trouble::LogsReplaced}),
                         [](const auto &test) { return test.param.label; });
