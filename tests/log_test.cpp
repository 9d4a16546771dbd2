#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ala/ala.h"
#include "service/log/log.h"
#include "service/log/log_internal.h"
#include "tests/support/log_daemon.h"
#include "tests/support/run_tool.h"
#include "tests/support/temp_dir.h"

using namespace qvledger;

// Counts the calls by "LEVEL FILE:LINE".  An entry is one call, or N calls if it says "repeated N times".
static std::map<std::string, unsigned> callsByPlace(const std::string &log) {
    std::map<std::string, unsigned> calls;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t place = line.find("]: ") + 3, text = line.find(": ", place);
        unsigned times = 1;
        std::sscanf(line.c_str() + text, ": repeated %u times: ", &times);
        calls[line.substr(place, text - place)] += times;
    }
    return calls;
}

class Log : public testing::Test {
protected:
    Log() {
        alarm(60); // ends a test that blocks
        restart(path.c_str());
    }
    ~Log() override {
        restart(nullptr);
        alarm(0);
    }

    static void restart(const char *sink, const char *level = nullptr, const char *trace = nullptr) {
        const std::pair<const char *, const char *> variables[] = {
            {"QV_LOG", sink}, {"QV_LOG_LEVEL", level}, {"QV_LOG_TRACE", trace}};
        for (const auto &[name, value] : variables)
            value != nullptr ? setenv(name, value, 1) : unsetenv(name);
        LOG__Reset();
    }
    // Returns the text that was logged since the last call.
    std::string takeLog() const {
        const std::string log = readFile(path);
        std::filesystem::remove(path);
        LOG__Reset();
        return log;
    }

    const TempDir folder;
    const std::string path = folder / "log";
};

TEST_F(Log, AnEntryIsOneEscapedLineWithItsPlace) {
    LOG_CondMessage(LOG_ERROR, __FILE__, 87, "code %d of %s\n", 12, "a\nb\x1B[2J\t\x7F%s\xC3\xA4\r\n");
    const std::string log = takeLog();
    EXPECT_THAT(log.substr(0, 25),
                testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{3}Z "));
    EXPECT_TRUE(log.ends_with("]: 5 tests/log_test.cpp:87: code 12 of "
                              "a\\x0Ab\\x1B[2J\\x09\\x7F%s\xC3\xA4\\x0D\\x0A\n"))
        << log;
}

TEST_F(Log, PiecesAreLoggedOnlyBetweenStartAndEnd) {
    ASSERT_NE(LOG_StartMessage(LOG_ERROR, "f.cpp", 3, 0), 0);
    LOG_CondAdd("prefix: ");
    const std::string piece(700, 'x'), longPiece(5000, 'y'); // together too long for an entry's buffer
    for (const std::string &text : {piece, piece, longPiece})
        LOG_CondAdd("%s", text.c_str());
    LOG_CondAdd("text %d.\n", 7);
    LOG_EndMessage();
    LOG_CondAdd("outside");
    LOG_EndMessage();
    EXPECT_EQ(LOG_StartMessage(LOG_DETAIL, "f.cpp", 4, 0), 0);
    LOG_CondAdd("unwanted");
    LOG_EndMessage();
    const std::string log = takeLog();
    EXPECT_TRUE(log.ends_with("f.cpp:3: prefix: " + piece + piece + longPiece + "text 7.\n")) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
}

TEST_F(Log, EnvironmentChoosesTheLevels) {
    // QV_LOG_LEVEL, QV_LOG_TRACE, and the levels of the entries that are logged.
    const char *const cases[][3] = {{nullptr, nullptr, "5"}, {"5", "0", "5"},      {"6", nullptr, "56"},
                                    {"7", nullptr, "567"},   {nullptr, "1", "57"}, {"6", "1", "567"},
                                    {"6x", "yes", "5"},      {"", "", "5"},        {"4", nullptr, "5"}};
    for (const auto &[level, trace, levels] : cases) {
        restart(path.c_str(), level, trace);
        LOG_Init("stdout", "E");
        LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "error");
        LOG_CondMessage(LOG_DETAIL, "f.cpp", 1, "detail");
        LOG_CondFuncTrace("ALA_Open", "f.cpp", 1, 1, 0);
        std::string written;
        for (const auto &[place, times] : callsByPlace(takeLog()))
            written += place.substr(0, place.find(" f.cpp:1"));
        EXPECT_EQ(written, levels) << (level ? level : "-") << (trace ? trace : "-");
    }
}

TEST_F(Log, EnvironmentChoosesTheSink) {
    restart("stderr");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "seen");
    setenv("QV_LOG", "none", 1);
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "the sink stays");
    restart("none");
    LOG_Init("stdout", "E");
    EXPECT_LT(LOG_g_level, LOG_ERROR);
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "unseen");
    restart((folder / "missing/log").c_str());
    errno = ERANGE;
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "goes to the system's log");
    EXPECT_EQ(errno, ERANGE);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0); // a pipe without a reader
    restart((folder / "pipe").c_str());
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "goes there too");
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 2) << errors;
    EXPECT_TRUE(errors.ends_with("f.cpp:1: the sink stays\n")) << errors;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Log, AnInstalledCallbackReceivesTheEntries) {
    std::string taken;
    const auto take = [](void *context, std::int32_t level, const char *file, std::int32_t line,
                         const char *text) {
        *static_cast<std::string *>(context) +=
            std::to_string(level) + ' ' + file + ':' + std::to_string(line) + ' ' + text + '\n';
    };
    for (const char *sink : {"none", path.c_str()}) {
        restart(sink, "6");
        ALA_SetLogSink(take, &taken);
        LOG_CondMessage(LOG_ERROR, "f.cpp", 7, "a\nb\n");
        LOG_CondMessage(LOG_DETAIL, "g.cpp", 8, "%s", std::string(2000, 'x').c_str());
        LOG_CondFuncTrace("ALA_Open", "f.cpp", 1, 1, 0);
        ALA_SetLogSink(nullptr, nullptr);
        LOG_CondMessage(LOG_ERROR, "f.cpp", 9, "to the sink");
        EXPECT_EQ(taken, "5 f.cpp:7 a\\x0Ab\n6 g.cpp:8 " + std::string(2000, 'x') + "\n") << sink;
        taken.clear();
    }
    const std::string log = takeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
}

// Returns each entry as "LEVEL FILE:LINE: TEXT".
static std::vector<std::string> entriesOf(const std::string &log) {
    std::vector<std::string> entries;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        entries.push_back(line.substr(line.find("]: ") + 3));
    return entries;
}

static void say(std::int32_t line, const std::string &text, std::int32_t level = LOG_ERROR) {
    LOG_CondMessage(level, "f.cpp", line, "%s", text.c_str());
}

TEST_F(Log, RepeatedEntriesAreCountedUntilTheTextChangesOrTheLogIsFlushed) {
    restart(path.c_str(), "6", "1");
    for (int i = 0; i < 3; ++i) {
        say(1, "a");
        say(2, "b\n");
        say(3, "detail", LOG_DETAIL);
        say(4, "trace", LOG_TRACE);
    }
    static const char sameFile[] = "f.cpp"; // the file name used above, at another address
    ASSERT_NE(LOG_StartMessage(LOG_ERROR, sameFile, 2, 0), 0);
    LOG_CondAdd("b");
    LOG_EndMessage();
    const std::string tooLong(1001, 'x'); // texts of this length are not compared
    for (const std::string &text : {std::string("c"), std::string("c"), std::string("a"), std::string(),
                                    std::string(), tooLong, tooLong, std::string("a")})
        say(1, text);
    LOG_Flush();
    say(2, "b");
    LOG__Reset();
    std::vector<std::string> entries = entriesOf(takeLog());
    for (const char *always : {"6 f.cpp:3: detail", "7 f.cpp:4: trace"})
        EXPECT_EQ(std::erase(entries, always), 3U);
    EXPECT_THAT(entries,
                testing::ElementsAre("5 f.cpp:1: a", "5 f.cpp:2: b", "5 f.cpp:1: repeated 2 times: a",
                                     "5 f.cpp:1: c", "5 f.cpp:1: repeated 1 times: c", "5 f.cpp:1: a",
                                     "5 f.cpp:1: ", "5 f.cpp:1: ", "5 f.cpp:1: " + tooLong,
                                     "5 f.cpp:1: " + tooLong, "5 f.cpp:1: a",
                                     "5 f.cpp:2: repeated 3 times: b", "5 f.cpp:2: repeated 1 times: b"));
}

TEST_F(Log, CountsAreExactWithManyPlacesAndThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int n = 0; n < 2000; ++n) {
                say(1, n % 100 == 0 ? "x" : "y");
                say(2 + n / 20, std::string(n % 300 == 0 ? 6000 : 1, 'z')); // more places than are counted
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    LOG__Reset();
    const std::string log = takeLog();
    auto calls = callsByPlace(log);
    EXPECT_EQ(calls.size(), 101U);
    EXPECT_EQ(std::exchange(calls["5 f.cpp:1"], 80), 4 * 2000U);
    for (const auto &[place, times] : calls)
        EXPECT_EQ(times, 80U) << place;
    EXPECT_LT(std::count(log.begin(), log.end(), '\n'), 5000);
}

// Does the work in a child process and returns the child's status.
template <class Work>
static int inChild(Work work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        work();
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST_F(Log, AForkedProcessWritesOnlyItsOwnCounts) {
    const auto sayTwice = [] {
        for (int i = 0; i < 2; ++i)
            say(1, "a");
    };
    sayTwice();
    EXPECT_EQ(inChild([&] {
                  sayTwice();
                  std::exit(0);
              }),
              0);
    LOG__Reset();
    EXPECT_THAT(entriesOf(takeLog()),
                testing::ElementsAre("5 f.cpp:1: a", "5 f.cpp:1: a", "5 f.cpp:1: repeated 1 times: a",
                                     "5 f.cpp:1: repeated 1 times: a"));
}

TEST_F(Log, AProcessForkedWhileAThreadLogsCanLog) {
    say(1, "the log is started");
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        while (!isDone)
            say(1, "a");
    });
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(inChild([] { say(2, "b"); }), 0);
    isDone = true;
    other.join();
}

TEST_F(Log, AFileThatReusesTheLogsDescriptorGetsNoEntry) {
    const int number = Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)).get(); // the next free descriptor
    say(1, "a");
    close(number);
    const Descriptor other(open((folder / "other").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(other.get(), number);
    say(1, "b");
    LOG__Reset();
    EXPECT_EQ(readFile(folder / "other"), "");
    EXPECT_EQ(fcntl(number, F_GETFD), FD_CLOEXEC) << "nor is it closed";
}

TEST_F(Log, TheLogFileNeverBecomesAStandardStream) {
    const Descriptor input(dup(STDIN_FILENO));
    close(STDIN_FILENO);
    say(1, "a");
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    LOG__Reset();
    dup2(input.get(), STDIN_FILENO);
    EXPECT_EQ(entriesOf(takeLog()).size(), 1U);
}

TEST_F(Log, TheSystemLogGetsTheNumberOfLostEntries) {
    static const std::string socket = folder / "socket"; // static: the log keeps its address
    restart((folder / "missing/log").c_str(), "6");
    LOG__Reset(socket.c_str());
    say(1, "nobody listens");
    unsigned lost = 2; // one reports that the file could not be opened
    for (const int type : {SOCK_DGRAM, SOCK_STREAM, SOCK_DGRAM}) { // starts a new daemon each time
        const LogDaemon daemon(socket, type);
        EXPECT_EQ(inChild(LOG_Flush), 0); // a child must not report the parent's lost entries
        say(1, "first", LOG_DETAIL);
        for (int i = 0; i < 1000; ++i)
            say(1, std::to_string(i));
        EXPECT_THAT(daemon.take(), testing::HasSubstr(" " + std::to_string(lost) + " entries lost: "));
        const std::string first = daemon.take();
        EXPECT_THAT(first.c_str(),
                    testing::MatchesRegex("<15>unit_tests\\[[0-9]+\\]: 6 f.cpp:1: first")); // LOG_DEBUG
        EXPECT_EQ(first.ends_with('\0'), type == SOCK_STREAM);
        lost = 1000;
        for (std::string entry = daemon.take(); !entry.empty(); entry = daemon.take(), --lost)
            EXPECT_THAT(entry, testing::StartsWith("<11>unit_tests[")); // LOG_ERR
        EXPECT_TRUE(lost > 0 && lost < 1000) << lost;
    }
}

// The log goes to a named pipe, then to standard error as a pipe and as a socket.  The test reads them late.
TEST_F(Log, AFullPipeNeitherBlocksNorMixesLines) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const Descriptor standardError(dup(STDERR_FILENO)), fifo(open(path.c_str(), O_RDONLY | O_NONBLOCK));
    int ofPipe[2], ofSocket[2];
    ASSERT_EQ(pipe(ofPipe) + socketpair(AF_UNIX, SOCK_STREAM, 0, ofSocket), 0);
    for (const auto &[reader, writer] :
         {std::pair{fifo.get(), -1}, {ofPipe[0], ofPipe[1]}, {ofSocket[0], ofSocket[1]}}) {
        fcntl(reader, F_SETFL, O_NONBLOCK);
        const std::string sink = writer != -1 ? "stderr" : path;
        if (writer != -1)
            dup2(writer, STDERR_FILENO);
        restart(sink.c_str(), "6");
        for (int i = 0; i < 1000; ++i)
            say(1, std::string(9000, 'x'), LOG_DETAIL); // too long for an atomic write to a pipe
        const std::string before = readAll(reader);
        say(2, "last");
        for (int i = 0; i < 2999; ++i)
            say(3, std::to_string((i + 2) / 3)); // most texts are logged three times
        const std::string after = readAll(reader);
        LOG_Flush();
        const std::string atTheEnd = readAll(reader);
        EXPECT_EQ(fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK, 0) << "other processes share it";
        dup2(standardError.get(), STDERR_FILENO);
        std::vector<std::string> entries = entriesOf(before + after);
        const auto taken = std::erase(entries, "6 f.cpp:1: " + std::string(9000, 'x'));
        if (reader != ofSocket[0]) { // a socket takes only whole entries
            EXPECT_THAT(entries[0], testing::MatchesRegex("6 f.cpp:1: x+"));
            entries.erase(entries.begin());
        }
        ASSERT_GE(entries.size(), 2U) << sink;
        EXPECT_THAT(entries[0], testing::HasSubstr(" " + std::to_string(1000 - taken) + " entries lost: "));
        EXPECT_EQ(entries[1], "5 f.cpp:2: last");
        const unsigned lost = 2999 - callsByPlace(after.substr(after.find("]: 5 f")) + atTheEnd)["5 f.cpp:3"];
        EXPECT_THAT(atTheEnd, testing::HasSubstr(" " + std::to_string(lost) + " entries lost: "));
    }
    for (const int fd : {ofPipe[0], ofPipe[1], ofSocket[0], ofSocket[1]})
        close(fd);
}
