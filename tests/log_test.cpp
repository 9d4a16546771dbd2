#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ala/ala.h"
#include "service/log/log.h"
#include "service/log/log_internal.h"
#include "service/log/log_repeats.h"
#include "service/log/log_sink.h"
#include "tests/support/log_daemon.h"
#include "tests/support/run_tool.h"
#include "tests/support/temp_dir.h"

using namespace qvledger;

class Log : public testing::Test {
protected:
    Log() { restart(path.c_str()); }
    ~Log() override { restart(nullptr); }

    static void restart(const char *sink, const char *level = nullptr, const char *trace = nullptr) {
        const std::pair<const char *, const char *> variables[] = {
            {"QV_LOG", sink}, {"QV_LOG_LEVEL", level}, {"QV_LOG_TRACE", trace}};
        for (const auto &[name, value] : variables)
            value != nullptr ? setenv(name, value, 1) : unsetenv(name);
        LOG__Reset();
    }
    // What the log got since the last call.
    std::string takeLog() const {
        const std::string log = readFile(path);
        std::filesystem::remove(path);
        LOG__Reset();
        return log;
    }

    const TempDir folder;
    const std::string path = folder / "log";
};

TEST_F(Log, EntryIsOneLineWithItsPlaceWhateverItsText) {
    errno = ERANGE;
    LOG_CondMessage(LOG_ERROR, __FILE__, 87, "code %d of %s\n", 12, "a\nb\x1B[2J\t\x7F%s\xC3\xA4\r\n");
    EXPECT_EQ(errno, ERANGE);
    std::string log = takeLog();
    std::replace_if(
        log.begin(), log.begin() + 24, [](unsigned char it) { return std::isdigit(it) != 0; }, '0');
    EXPECT_TRUE(log.starts_with("0000-00-00T00:00:00.000Z ")) << log;
    EXPECT_TRUE(log.ends_with("]: 5 tests/log_test.cpp:87: code 12 of "
                              "a\\x0Ab\\x1B[2J\\x09\\x7F%s\xC3\xA4\\x0D\\x0A\n"))
        << log;
}

TEST_F(Log, PiecesMakeAnEntryOnlyBetweenStartAndEnd) {
    ASSERT_NE(LOG_StartMessage(LOG_ERROR, "f.cpp", 3, 0), 0);
    LOG_CondAdd("prefix: ");
    const std::string piece(700, 'x'), longPiece(5000, 'y'); // which outgrow the room of an entry
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
    // QV_LOG_LEVEL, QV_LOG_TRACE and the levels that come through.
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
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "goes to the system's log");
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 2) << errors;
    EXPECT_TRUE(errors.ends_with("f.cpp:1: the sink stays\n")) << errors;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// The library's own operation for it, and through it the service's.
TEST_F(Log, AFunctionTakesTheEntriesWhereverTheyWouldGo) {
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

// Level, place and text of each entry.
static std::vector<std::string> entriesOf(const std::string &log) {
    std::vector<std::string> entries;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        entries.push_back(line.substr(line.find("]: ") + 3));
    return entries;
}

static void say(std::int32_t line, const std::string &text) {
    LOG_CondMessage(LOG_ERROR, "f.cpp", line, "%s", text.c_str());
}

TEST_F(Log, RepetitionsAreCountedAndToldBeforeThePlacesNextEntry) {
    for (int i = 0; i < 3; ++i) {
        say(1, "a");
        say(2, "b\n");
    }
    LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "a\n");
    static const char sameFile[] = "f.cpp"; // at another address
    ASSERT_NE(LOG_StartMessage(LOG_ERROR, sameFile, 2, 0), 0);
    LOG_CondAdd("b");
    LOG_EndMessage();
    for (const char *text : {"c", "c", "a", ""})
        say(1, text);
    LOG_Flush();
    say(2, "b");
    LOG__Reset();
    EXPECT_THAT(entriesOf(takeLog()),
                testing::ElementsAre("5 f.cpp:1: a", "5 f.cpp:2: b", "5 f.cpp:1: last entry repeated 3 times",
                                     "5 f.cpp:1: c", "5 f.cpp:1: last entry repeated 1 times", "5 f.cpp:1: a",
                                     "5 f.cpp:1: ", "5 f.cpp:2: last entry repeated 3 times",
                                     "5 f.cpp:2: last entry repeated 1 times"));
}

TEST_F(Log, NoCallIsLostInTheCountsOfManyPlacesAndThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int n = 0; n < 2000; ++n) {
                say(1, n % 100 == 0 ? "x" : "y");
                say(n / 50, std::string(n % 300 == 0 ? 6000 : 1, 'z')); // 40 places, more than are known
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    LOG__Reset();
    const std::string log = takeLog();
    auto calls = callsByPlace(log);
    EXPECT_EQ(calls["5 f.cpp:1"], 4 * (2000U + 50));
    calls.erase("5 f.cpp:1");
    EXPECT_EQ(calls.size(), 39U);
    for (const auto &[place, times] : calls)
        EXPECT_EQ(times, 200U) << place;
    EXPECT_LT(std::count(log.begin(), log.end(), '\n'), 4000);
}

TEST_F(Log, AForkedProcessCountsItsOwnRepetitions) {
    for (int i = 0; i < 3; ++i)
        say(1, "a");
    const pid_t child = fork();
    if (child == 0) {
        say(1, "a");
        say(1, "a");
        LOG_Flush();
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    LOG__Reset();
    EXPECT_THAT(entriesOf(takeLog()),
                testing::ElementsAre("5 f.cpp:1: a", "5 f.cpp:1: a", "5 f.cpp:1: last entry repeated 1 times",
                                     "5 f.cpp:1: last entry repeated 2 times"));
}

TEST_F(Log, AFileThatTookTheLogsDescriptorGetsNoEntry) {
    const int number = Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)).get(); // the next one
    say(1, "a");
    close(number);
    const Descriptor other(open((folder / "other").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(other.get(), number);
    say(1, "b");
    LOG__Reset();
    EXPECT_EQ(readFile(folder / "other"), "");
    EXPECT_EQ(fcntl(number, F_GETFD), FD_CLOEXEC) << "it is not closed either";
}

// ---- Sinks that do not take all ----

static unsigned writeMany(LogSink &sink, std::size_t length) {
    const auto start = std::chrono::steady_clock::now();
    unsigned taken = 0;
    for (int i = 0; i < 1000; ++i)
        taken += sink.write({LOG_ERROR, "f.cpp", 1}, std::string(length, 'x')) ? 1 : 0;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_TRUE(taken > 0 && taken < 1000) << taken;
    return taken;
}

TEST(LogSink, SystemLogHearsHowManyEntriesItDidNotTake) {
    const TempDir folder;
    const std::string path = folder / "socket";
    LogSink sink(path.c_str());
    {
        const LogDaemon daemon(path, SOCK_DGRAM);
        sink.open((folder / "missing/log").c_str(), false);
        EXPECT_THAT(daemon.take(), testing::HasSubstr("/missing/log cannot be opened: "));
    }
    EXPECT_FALSE(sink.write({LOG_ERROR, "f.cpp", 1}, "nobody listens"));
    unsigned lost = 1;
    for (const int type : {SOCK_DGRAM, SOCK_STREAM, SOCK_DGRAM}) { // each a daemon that was started anew
        const LogDaemon daemon(path, type);
        sink.tryAgain();
        EXPECT_TRUE(sink.write({LOG_ERROR, "f.cpp", 1}, "first"));
        const unsigned taken = writeMany(sink, 10);
        EXPECT_THAT(daemon.take(), testing::HasSubstr(" " + std::to_string(lost) + " entries lost: "));
        const std::string first = daemon.take();
        EXPECT_THAT(first.c_str(), testing::MatchesRegex("<11>[A-Z][a-z]+ [ 1-3][0-9] [0-9:]+ "
                                                         "unit_tests\\[[0-9]+\\]: 5 f.cpp:1: first"));
        EXPECT_EQ(first.ends_with('\0'), type == SOCK_STREAM);
        for (unsigned i = 0; i < taken; ++i)
            EXPECT_THAT(daemon.take(), testing::HasSubstr(": xxxxxxxxxx"));
        EXPECT_EQ(daemon.take(), "");
        lost = 1000 - taken;
    }
    sink.close();
}

// Under a timer, which interrupts each wait, in vain or not.
TEST_F(Log, AtTheEndAReaderThatIsLateHearsOfEveryEntry) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const Descriptor reader(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::signal(SIGALRM, [](int) {});
    const itimerval often = {{0, 2000}, {0, 2000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 3000; ++i)
        say(1, std::to_string(i));
    std::string bytes(1'000'000, '\0');
    std::size_t size = 0;
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        size = static_cast<std::size_t>(read(reader.get(), bytes.data(), bytes.size()));
    });
    LOG_Flush();
    late.join();
    setitimer(ITIMER_REAL, &never, nullptr);
    size += static_cast<std::size_t>(read(reader.get(), bytes.data() + size, bytes.size() - size));
    std::vector<std::string> entries = entriesOf(bytes.substr(0, size));
    ASSERT_THAT(entries.back(), testing::HasSubstr(" entries lost: "));
    const std::size_t number = entries.back().find(": ") + 2;
    EXPECT_EQ(std::stoul(entries.back().substr(number)) + entries.size() - 1, 3000U);
}

TEST(LogSink, AFullPipeCutsNoLineIntoAnotherOne) {
    const TempDir folder;
    const std::string path = folder / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const Descriptor reader(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    LogSink sink("");
    sink.open(path.c_str(), true);
    const std::size_t length = 9000; // more than a pipe takes in one piece
    const unsigned taken = writeMany(sink, length);
    EXPECT_FALSE(sink.isReady()) << "not worth a try for a second";
    std::string bytes(1'000'000, '\0');
    const auto drain = [&] {
        return static_cast<std::size_t>(read(reader.get(), bytes.data(), bytes.size()));
    };
    const std::string before = bytes.substr(0, drain());
    EXPECT_FALSE(before.ends_with('\n')) << "the last entry is to be cut";
    sink.tryAgain();
    EXPECT_TRUE(sink.write({LOG_ERROR, "f.cpp", 2}, "last"));
    const std::vector<std::string> entries = entriesOf(before + bytes.substr(0, drain()));
    ASSERT_EQ(entries.size(), taken + 3);
    for (unsigned i = 0; i < taken; ++i)
        EXPECT_EQ(entries[i], "5 f.cpp:1: " + std::string(length, 'x'));
    EXPECT_THAT(entries[taken + 1], testing::EndsWith(": " + std::to_string(1000 - taken) +
                                                      " entries lost: the log's output did not take them"));
    EXPECT_EQ(entries[taken + 2], "5 f.cpp:2: last");
    sink.close();
}

// An entry that was lost is not the place's last one: its repetition is the first that is written.
TEST_F(Log, LostEntriesAreNotRepeated) {
    static qvledger::LogRepeats repeats;
    const qvledger::LogPlace place = {LOG_ERROR, __FILE__, 1};
    qvledger::DueRepetitions due;
    repeats.enter(place, "text", due);
    EXPECT_TRUE(repeats.count(place, "text", due));
    EXPECT_EQ(repeats.forget(place), 1U);
    EXPECT_FALSE(repeats.count(place, "text", due));
}
