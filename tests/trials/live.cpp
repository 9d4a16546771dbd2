// Concurrent runs and a server, disturbed by signals, a full disk and other programs: every record must be in
// a whole line of a report or in a log.  With qvledger-json -c, every record must be in a report at the end.
//
// A round's number seeds its random choices; QVLEDGER_LIVE_ROUNDS is the number of rounds of each kind.
#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <random>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr int kUsualRounds = 15;
constexpr int kLogs = 6, kMostRecords = 25; // logs per server; records per log
constexpr int kFresh = 1000;                // number of the first record in a log that replaces another
constexpr int kServerFailed = 2, kNameLost = 3;
static const char *const kServers[] = {"alpha", "beta"};
static const char *const kHeader = "job-name\tjob-comment";

namespace {

enum Trouble { kNone, kKills, kSignals, kFullDisk, kReportRemoved, kLogsReplaced };

struct Kind {
    const char *label;
    int servers, reports;
    bool byShell; // the report is standard output, not -o's file
    Trouble trouble;
    bool serverWrites;         // a server writes alpha's current log
    bool sinceLastRun = false; // the runs are those of qvledger-json -c
};

class Live : public testing::TestWithParam<Kind> {
protected:
    void SetUp() override;
    void TearDown() override;
    void round();
    int layLogs();
    pid_t startServer(int first);
    pid_t startRun(const std::string &server, const fs::path &report, bool findsNone);
    void makeTrouble(const std::vector<pid_t> &started);
    void check(bool isOver);

    PrintSystem system;
    const Kind kind = GetParam();
    const fs::path folder = system / "reports";
    std::mt19937 random;
    std::set<int> wanted;
    int runs = 0, endedEarly = 0;
};

} // namespace

static std::string commentOf(int number) {
    return std::string(static_cast<std::size_t>(number * 97 % 5000), static_cast<char>('a' + number % 26));
}

// The line of a record in a report of qvledger, and the end of its line from qvledger-json.
static std::string lineOf(int number) {
    return std::to_string(number) + '\t' + commentOf(number);
}
static std::string jsonOf(int number) {
    return "{\"job-name\":[\"" + std::to_string(number) + "\"],\"job-comment\":[\"" + commentOf(number) +
           "\"]},\"documents\":[]}";
}

// Returns the number of the record in a line of a report; 0 if the line is not that of a whole record.
static int numberIn(const std::string &line) {
    static const std::string kName = "{\"job-name\":[\"";
    const std::size_t at = line.find(kName);
    const int number = std::atoi(line.c_str() + (at != line.npos ? at + kName.size() : 0));
    return line == lineOf(number) || line.ends_with(jsonOf(number)) ? number : 0;
}

static Log logOf(int first, int end) {
    Log log;
    for (int number = first; number < end; ++number)
        log.job(jobOf({{"job-name", {std::to_string(number)}}, {"job-comment", {commentOf(number)}}}));
    return log;
}

// Mounts a small file system that the reports can fill, if the trial needs a full disk.
void Live::SetUp() {
    fs::create_directory(folder);
    if (kind.trouble == kFullDisk &&
        (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
         mount("none", folder.c_str(), "tmpfs", 0, "size=256k") != 0))
        GTEST_SKIP() << "no file system can be mounted here";
}

void Live::TearDown() {
    if (kind.trouble == kFullDisk)
        umount(folder.c_str());
    std::printf("%s: %d runs, %d of them ended early\n", kind.label, runs, endedEarly);
}

// Deletes the files of the last round and makes new logs.  Returns the first unused record number.
int Live::layLogs() {
    for (const fs::path &path : {fs::path(system.root.logs()), folder, system / "aside"}) {
        fs::create_directories(path);
        for (const auto &entry : fs::directory_iterator(path))
            fs::remove_all(entry.path());
    }
    wanted.clear();
    int next = 1;
    for (int server = 0; server < kind.servers; ++server)
        for (int log = 0; log < kLogs; ++log) {
            const int first = next;
            next += 1 + static_cast<int>(random() % kMostRecords);
            logOf(first, next).save(system.root.log(kServers[server], "1999030" + std::to_string(1 + log)));
        }
    for (int number = 1; number < next; ++number)
        wanted.insert(number);
    return next;
}

// ---- The server, in its own process ----

static int openNew(const fs::path &path) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND, 0644);
    return fd != -1 ? fd : (_exit(kServerFailed), -1);
}

static void append(int fd, std::string_view bytes, std::mt19937 &random) {
    while (!bytes.empty()) {
        const std::size_t most = random() % 3 == 0 ? 9 : 6000;
        const std::string_view piece = bytes.substr(0, 1 + random() % most);
        if (write(fd, piece.data(), piece.size()) != static_cast<ssize_t>(piece.size()))
            _exit(kServerFailed);
        bytes.remove_prefix(piece.size());
        if (random() % 3 == 0)
            usleep(static_cast<useconds_t>(random() % 2000));
    }
}

// Starts a server that writes a log, renames it to its day's name at a random point, and writes the next log.
pid_t Live::startServer(int first) {
    const int split = first + 10, end = split + 10;
    for (int number = first; number < end; ++number)
        wanted.insert(number);
    if (const pid_t server = fork(); server != 0)
        return server;
    char tail[16];
    std::tm parts = {};
    const std::time_t yesterday = std::time(nullptr) - 24 * 60 * 60;
    std::strftime(tail, sizeof tail, "%Y%m%d", gmtime_r(&yesterday, &parts));
    const Bytes old = logOf(first, split).bytes(), fresh = logOf(split, end).bytes();
    const int oldLog = openNew(system.log("current"));
    const std::size_t renamedAt = random() % old.size();
    append(oldLog, std::string_view(old).substr(0, renamedAt), random);
    if (rename(system.log("current").c_str(), system.log(tail).c_str()) != 0)
        _exit(kServerFailed);
    const int freshLog = openNew(system.log("current"));
    append(oldLog, std::string_view(old).substr(renamedAt), random);
    struct stat status;
    if (fstat(oldLog, &status) != 0 || status.st_nlink == 0)
        _exit(kNameLost);
    close(oldLog);
    append(freshLog, fresh, random);
    _exit(0);
}

// ---- A round ----

pid_t Live::startRun(const std::string &server, const fs::path &report, bool findsNone) {
    std::vector<std::string> arguments = {"-s", findsNone ? "20300101" : "19990101"};
    if (kind.sinceLastRun)
        arguments.insert(arguments.end(), {"-c", system / "aside/state"});
    else
        arguments.emplace_back("-d");
    if (!kind.byShell)
        arguments.insert(arguments.end(), {"-o", report});
    arguments.push_back(server);
    const int append = random() % 2 == 0 ? O_APPEND : 0; // like ">>" or "1<>" in a shell
    const int output =
        kind.byShell ? open(report.c_str(), O_WRONLY | append | O_CREAT | O_CLOEXEC, 0644) : -1;
    const pid_t run =
        system.start(arguments, {.environment = {{"QV_LOG", "none"}},
                                 .output = output,
                                 .program = kind.sinceLastRun ? QVLEDGER_JSON_BINARY : QVLEDGER_BINARY});
    close(output);
    ++runs;
    return run;
}

void Live::makeTrouble(const std::vector<pid_t> &started) {
    constexpr int kAsked[] = {SIGINT, SIGTERM, SIGHUP};
    usleep(static_cast<useconds_t>(random() % 12'000));
    if (kind.trouble == kKills || kind.trouble == kSignals)
        for (const pid_t run : started)
            if (random() % 2 == 0)
                kill(run, kind.trouble == kKills ? SIGKILL : kAsked[random() % 3]);
    if (kind.trouble == kReportRemoved) { // lines that are written later are ignored
        std::rename((folder / "0").c_str(), (system / "aside/report").c_str());
        writeFile(folder / "removed", readFile(system / "aside/report"));
    }
    if (kind.trouble == kLogsReplaced) {
        const fs::path replaced = system.log("1999030" + std::to_string(1 + random() % kLogs));
        logOf(kFresh, kFresh + 5).save(system / "fresh");
        std::error_code gone;
        fs::create_hard_link(replaced, system / "aside/log", gone); // no run deletes this second name
        fs::rename(system / "fresh", replaced);
        for (int number = kFresh; number < kFresh + 5; ++number)
            wanted.insert(number);
    }
}

void Live::check(bool isOver) {
    // A kept log is reported again.
    const bool mayRepeat = kind.trouble != kNone || (kind.serverWrites && !kind.sinceLastRun);
    std::set<int> found;
    for (const auto &entry : fs::directory_iterator(folder)) {
        std::istringstream lines(readFile(entry.path()));
        std::set<int> seen;
        for (std::string line; std::getline(lines, line);)
            if (const int number = numberIn(line); number != 0) {
                ASSERT_TRUE(seen.insert(number).second || mayRepeat)
                    << number << " is repeated in " << entry.path();
            } else if (kind.trouble != kKills && entry.path().filename() != "removed") {
                ASSERT_TRUE(line == kHeader || line.find("\"complete\":") != line.npos)
                    << line << " in " << entry.path();
            }
        found.insert(seen.begin(), seen.end());
    }
    if (kind.sinceLastRun && !isOver)
        return;
    Bytes logs = readFile(system / "aside/log");
    for (const auto &entry : fs::directory_iterator(system.root.logs()))
        logs += readFile(entry.path());
    for (const int number : wanted)
        ASSERT_TRUE(found.contains(number) ||
                    (!kind.sinceLastRun &&
                     logs.find(logOf(number, number + 1).bytes().substr(Log().size())) != logs.npos))
            << "record " << number << " is lost";
}

void Live::round() {
    const int next = layLogs();
    if (kind.trouble == kFullDisk)
        writeFile(folder / "filler", Bytes(random() % 250'000, '\n'));
    const pid_t server = kind.serverWrites ? startServer(next) : -1;
    std::vector<pid_t> started;
    for (int count = 2 + static_cast<int>(random() % 5), run = 0; run < count; ++run) {
        started.push_back(startRun(kServers[run % kind.servers], folder / std::to_string(run % kind.reports),
                                   random() % 6 == 0));
        usleep(static_cast<useconds_t>(random() % (kind.serverWrites ? 12'000 : 3000)));
    }
    makeTrouble(started);
    int status = 0;
    for (const pid_t run : started) {
        ASSERT_EQ(waitpid(run, &status, 0), run);
        endedEarly += WIFSIGNALED(status) ? 1 : 0;
        ASSERT_TRUE(WIFEXITED(status) || kind.trouble == kKills || kind.trouble == kSignals)
            << "ended by " << WTERMSIG(status);
    }
    if (server != -1) {
        ASSERT_EQ(waitpid(server, &status, 0), server);
        ASSERT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 0)
            << (WEXITSTATUS(status) == kNameLost ? "a log open for writing was deleted" : "server failed");
    }
    fs::remove(folder / "filler");
    check(false);
    for (int number = 0; number < kind.servers && !HasFatalFailure(); ++number) {
        const pid_t last = startRun(kServers[number], folder / "0", false);
        ASSERT_EQ(waitpid(last, &status, 0), last);
    }
    check(true);
}

TEST_P(Live, NoRecordIsLostOrTorn) {
    const char *set = std::getenv("QVLEDGER_LIVE_ROUNDS");
    const int rounds = set != nullptr ? std::atoi(set) : kUsualRounds;
    for (int number = 0; number < rounds && !HasFatalFailure(); ++number) {
        SCOPED_TRACE("round " + std::to_string(number));
        random.seed(static_cast<unsigned>(number));
        round();
    }
}

INSTANTIATE_TEST_SUITE_P(Rounds, Live,
                         testing::Values(Kind{"OneServerOneReport", 1, 1, false, kNone, false},
                                         Kind{"OneServerSeveralReports", 1, 3, false, kNone, false},
                                         Kind{"TwoServersOneReport", 2, 1, false, kNone, false},
                                         Kind{"StandardOutput", 2, 2, true, kNone, false},
                                         Kind{"Killed", 2, 1, false, kKills, false},
                                         Kind{"AskedToEnd", 2, 2, true, kSignals, false},
                                         Kind{"FullDisk", 2, 2, true, kFullDisk, false},
                                         Kind{"ReportRemoved", 1, 1, false, kReportRemoved, false},
                                         Kind{"LogsReplaced", 1, 2, false, kLogsReplaced, false},
                                         Kind{"ServerWrites", 1, 2, false, kNone, true},
                                         Kind{"ServerWritesAndRunsAreKilled", 1, 1, false, kKills, true},
                                         Kind{"SinceLastRun", 1, 1, false, kNone, true, true},
                                         Kind{"SinceLastRunKilled", 2, 2, false, kKills, true, true}),
                         [](const auto &test) { return test.param.label; });
