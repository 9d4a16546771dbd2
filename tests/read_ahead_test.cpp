// Reading ahead of a log's reader.
#include "ala/log/read_ahead.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>

#include "tests/support/temp_dir.h"

using namespace qvledger;

class ReadAheadFile : public testing::Test {
protected:
    ReadAheadFile() {
        for (int i = 0; i < 200'000; ++i)
            content += static_cast<char>(i * 7 + i / 251);
        std::ofstream(path, std::ios::binary) << content;
        fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    }
    ~ReadAheadFile() override { closeLog(fd); }

    std::string get(unsigned size) {
        std::string bytes(size, '\0');
        const int got = readLog(fd, bytes.data(), size);
        return got < 0 ? "failed" : bytes.substr(0, static_cast<std::size_t>(got));
    }
    void overwrite(long position, const std::string &bytes) { std::fstream(path).seekp(position) << bytes; }

    const TempDir folder;
    const std::string path = folder / "file";
    std::string content;
    int fd = -1;
};

TEST_F(ReadAheadFile, EveryRequestIsFilledUntilTheFileEnds) {
    for (const unsigned size : {1U, 4U, 1000U, 65535U, 65536U, 65537U, 150'000U, 200'000U, 300'000U}) {
        ASSERT_EQ(seekLog(fd, 0, SEEK_SET), 0);
        std::string all = get(3); // so that requests straddle the blocks
        for (std::string piece = get(size); !piece.empty(); piece = get(size)) {
            EXPECT_TRUE(piece.size() == size || all.size() + piece.size() == content.size()) << size;
            all += piece;
        }
        EXPECT_TRUE(all == content) << size;
    }
}

TEST_F(ReadAheadFile, SeekingCountsFromTheReadersPosition) {
    get(70'000);
    EXPECT_EQ(seekLog(fd, -20, SEEK_CUR), 69'980);
    EXPECT_EQ(get(20), content.substr(69'980, 20));
    EXPECT_EQ(seekLog(fd, -80'000, SEEK_CUR), -1);
    EXPECT_EQ(seekLog(fd, std::numeric_limits<long>::min(), SEEK_CUR), -1);
    EXPECT_EQ(get(10), content.substr(70'000, 10)) << "a failed seek moves nothing";
    EXPECT_EQ(seekLog(fd, -5, SEEK_END), 199'995);
    EXPECT_EQ(get(10), content.substr(199'995));
}

TEST_F(ReadAheadFile, SeekingShowsWhatWasWrittenMeanwhile) {
    get(100);
    overwrite(100, "fresh");
    EXPECT_EQ(seekLog(fd, 0, SEEK_CUR), 100);
    EXPECT_EQ(get(5), "fresh");

    seekLog(fd, -3, SEEK_END);
    EXPECT_EQ(get(10).size(), 3U);
    EXPECT_EQ(get(10), "");
    overwrite(200'000, "grown");
    EXPECT_EQ(seekLog(fd, -3, SEEK_CUR), 199'997);
    EXPECT_EQ(get(10), content.substr(199'997) + "grown");
}

// The process's own memory, of which nothing can be read after a page's end.
TEST(ReadAhead, AFailedReadReadsNothing) {
    constexpr std::size_t kSize = 65536; // a multiple of the page's size
    void *const memory = mmap(nullptr, 2 * kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    ASSERT_EQ(munmap(static_cast<char *>(memory) + kSize, kSize), 0);
    const int fd = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    const auto start = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(memory) + kSize - 10);
    char bytes[20];
    ASSERT_EQ(seekLog(fd, start, SEEK_SET), start);
    EXPECT_EQ(readLog(fd, bytes, 20), -1);
    EXPECT_EQ(seekLog(fd, 0, SEEK_CUR), start);
    EXPECT_EQ(readLog(fd, bytes, 10), 10);
    closeLog(fd);
    munmap(memory, kSize);
}

TEST_F(ReadAheadFile, ReusedDescriptorStartsAfresh) {
    get(10);
    closeLog(fd);
    ASSERT_EQ(open(path.c_str(), O_RDONLY | O_CLOEXEC), fd);
    EXPECT_EQ(get(10), content.substr(0, 10));
}
