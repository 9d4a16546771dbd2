#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>

#include <gtest/gtest.h>

#include "ala/ala.h"
#include "service/log.h"
#include "service/log_internal.h"
#include "tests/support/temp_dir.h"

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
        const std::string log = takeLog();
        for (std::size_t at = 0; (at = log.find(" f.cpp:1: ", at)) != log.npos; ++at)
            written += log[at - 1];
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
