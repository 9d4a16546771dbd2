// Reading a log in large pieces.
#include "ala/log/log_file.h"

#include <fstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/descriptor.h"
#include "tests/support/temp_dir.h"

using namespace qvledger;

class LogFileOf : public testing::Test {
protected:
    LogFileOf() {
        for (int i = 0; i < 400'000; ++i)
            content += static_cast<char>(i * 7 + i / 251);
        std::ofstream(path, std::ios::binary) << content;
        descriptor.reset(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        file = LogFile(descriptor.get());
    }

    // The next bytes, or why they cannot be had.
    std::string get(std::size_t size) {
        if (const std::uint8_t *bytes = file.need(size))
            return {reinterpret_cast<const char *>(bytes), size};
        return file.isAtEnd() ? "end" : "cut";
    }
    std::string item() const { return {reinterpret_cast<const char *>(file.item()), file.itemSize()}; }

    const TempDir folder;
    const std::string path = folder / "file";
    std::string content;
    Descriptor descriptor;
    LogFile file;
};

TEST_F(LogFileOf, ItemsStayInOnePieceWhateverTheirSize) {
    for (const std::size_t size : {1000U, 122'879U, 122'880U, 122'881U, 150'000U, 396'000U}) {
        SCOPED_TRACE(size);
        file.moveTo(0);
        std::size_t at = 0;
        for (; at + size + 4 <= content.size(); at += size + 4) {
            ASSERT_EQ(get(4), content.substr(at, 4));
            ASSERT_TRUE(get(size) == content.substr(at + 4, size));
            ASSERT_EQ(file.position(), static_cast<std::int64_t>(at));
            ASSERT_TRUE(item() == content.substr(at, size + 4));
            file.consume();
        }
        EXPECT_EQ(get(size + 4), at == content.size() ? "end" : "cut");
        EXPECT_EQ(file.reach(), 400'000);
        EXPECT_EQ(file.position(), static_cast<std::int64_t>(at)) << "nothing is lost";
    }
}

TEST_F(LogFileOf, WhatWasWrittenMeanwhileShowsAfterAMove) {
    file.moveTo(100);
    get(10);
    std::fstream(path).seekp(100) << "fresh";
    EXPECT_EQ(item(), content.substr(100, 10));
    file.moveTo(100);
    EXPECT_EQ(get(5), "fresh");

    file.moveTo(399'997);
    EXPECT_EQ(get(10), "cut");
    std::fstream(path).seekp(400'000) << "grown";
    EXPECT_EQ(get(8), content.substr(399'997) + "grown");
    file.consume();
    EXPECT_EQ(get(1), "end");
}
