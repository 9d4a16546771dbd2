// Identity, texts and the process of the platform layer.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <thread>
#include <vector>

#include <malloc.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/os.h"
#include "platform/posix/computer_name.h"
#include "platform/posix/name_service.h"
#include "platform/posix/sid.h"
#include "platform/posix/token_groups.h"
#include "platform/utf8.h"
#include "service/thread.h"

using namespace qvledger;

TEST(Identity, NamesAreTakenApart) {
    const struct {
        const char *full, *name, *domain;
    } cases[] = {{"alice", "alice", ""},
                 {"CORP\\alice", "alice", "CORP"},
                 {"alice@corp.example", "alice", "corp.example"},
                 {"CORP\\a@b", "a@b", "CORP"},
                 {"\\alice", "\\alice", ""},
                 {"alice@", "alice@", ""}};
    for (const auto &row : cases) {
        EXPECT_EQ(splitAccountName(row.full).name, row.name) << row.full;
        EXPECT_EQ(splitAccountName(row.full).domain, row.domain) << row.full;
    }
    EXPECT_EQ(computerNameOf("host.example.org"), "HOST");
    EXPECT_EQ(computerNameOf("a-name-of-many-letters.org"), "A-NAME-OF-MANY-");
}

TEST(Identity, GroupsThatDoNotFitTellTheSizeNeeded) {
    for (const std::size_t count : {1U, 15U, 16U, 1000U}) {
        const std::vector<gid_t> groups(count, 7);
        std::vector<TOKEN_GROUPS> buffer(count * 2);
        DWORD needed = 0;
        EXPECT_EQ(writeTokenGroups(groups, buffer.data(), 512, &needed), count <= 15) << count;
        EXPECT_FALSE(writeTokenGroups(groups, buffer.data(), needed - 1, &needed)) << count;
        ASSERT_TRUE(writeTokenGroups(groups, buffer.data(), needed, &needed)) << count;
        EXPECT_EQ(buffer.data()->GroupCount, count);
        const SID_AND_ATTRIBUTES *last = buffer.data()->Groups + count - 1;
        const Sid expected = makeSid(kSidOfGroup, 7);
        EXPECT_EQ(std::memcmp(last->Sid, &expected, sizeof expected), 0) << count;
    }
}

TEST(Identity, CallsThatLackRoomSayHowMuchTheyNeed) {
    char name[512] = "", other[512] = "", sid[64] = "";
    DWORD length = sizeof name, size = 1, sidSize = sizeof sid, domainSize = sizeof other;
    SID_NAME_USE use = SidTypeGroup;
    EXPECT_TRUE(GetUserNameA(name, &length));
    EXPECT_TRUE(GetUserNameA(other, &size) == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(size, length);
    EXPECT_TRUE(LookupAccountNameA(nullptr, name, sid, &sidSize, other, &domainSize, &use));
    size = 1;
    EXPECT_FALSE(LookupAccountSidA(nullptr, sid, name, &size, other, &domainSize, &use));
    EXPECT_TRUE(size == length && GetLastError() == ERROR_INSUFFICIENT_BUFFER) << size;
    size = 1;
    EXPECT_TRUE(GetComputerNameA(name, &size) == 0 && GetLastError() == ERROR_BUFFER_OVERFLOW);
    EXPECT_EQ(size, std::strlen(other) + 1) << "the domain of a local account is its computer";
    OSVERSIONINFOA version = {};
    EXPECT_TRUE(GetVersionExA(&version) == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    BYTE *info = nullptr;
    EXPECT_EQ(NetWkstaGetInfo(nullptr, 5, &info), 124U) << "no such level";
}

TEST(Texts, CaseIsFoldedInEveryLocaleAlike) {
    const auto bytes = [](const char *text) { return reinterpret_cast<const unsigned char *>(text); };
    EXPECT_NE(_mbsicmp(bytes("\xC4"), bytes("\xE4")), 0); // no UTF-8, so no letters
    for (const auto &[other, ascii] : {std::pair{"\u0130", "i"}, {"\u017F", "s"}}) {
        EXPECT_NE(_mbsicmp(bytes(other), bytes(ascii)), 0) << ascii;
    }
    const unsigned char *text = bytes("\xC3\xA9\xA9\xE9");
    EXPECT_EQ(_mbschr(text, 0xE9), text);
}

TEST(Process, EnvironmentGrowsByWhatIsSetAndReturnsToWhatWasKept) {
    const auto value = [](const char *name) {
        const char *text = getenv(name);
        return std::string(text != nullptr ? text : "(none)");
    };
    EXPECT_EQ(_putenv("QV_TEST=a=b"), 0);
    EXPECT_EQ(_putenv("=x"), -1);
    char **const kept = OS_KeepEnvironment();
    EXPECT_EQ(_putenv("QV_TEST=c"), 0);
    EXPECT_EQ(_putenv("QV_TEST="), 0);
    EXPECT_EQ(value("QV_TEST"), "(none)");
    EXPECT_EQ(_putenv("QV_TEST=d"), 0);
    EXPECT_EQ(_putenv("QV_TEST_2=e"), 0);
    EXPECT_EQ(value("QV_TEST") + value("QV_TEST_2"), "de");
    const std::size_t before = mallinfo2().uordblks;
    for (int number = 0; number < 4000; ++number)
        EXPECT_EQ(_putenv(("QV_TEST_" + std::to_string(number) + "=x").c_str()), 0);
    EXPECT_LT(mallinfo2().uordblks - before, std::size_t{4} << 20);
    EXPECT_EQ(value("QV_TEST_0") + value("QV_TEST_3999"), "xx");
    OS_RestoreEnvironment(kept);
    EXPECT_EQ(value("QV_TEST") + value("QV_TEST_2"), "a=b(none)");
    EXPECT_EQ(_putenv("QV_TEST="), 0);
}

TEST(Texts, Utf8IsTakenApartAndPutTogether) {
    const auto roundTrip = [](std::string_view text, std::vector<char32_t> &characters) {
        std::string again;
        while (!text.empty()) {
            characters.push_back(takeUtf8(text));
            EXPECT_TRUE(appendUtf8(again, characters.back()));
        }
        return again;
    };
    const std::u32string_view ends = U"\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF\x10000\x10FFFF";
    std::string text;
    for (const char32_t character : ends)
        EXPECT_TRUE(appendUtf8(text, character));
    std::vector<char32_t> characters;
    EXPECT_TRUE(isUtf8(text));
    EXPECT_EQ(roundTrip(text, characters), text);
    EXPECT_TRUE(std::equal(characters.begin(), characters.end(), ends.begin(), ends.end()));

    for (const std::string stray : {"\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                                    "\xF4\x90\x80\x80", "\xE2\x82", "\xFF"}) {
        characters.clear();
        EXPECT_FALSE(isUtf8(stray)) << testing::PrintToString(stray);
        EXPECT_EQ(roundTrip(stray, characters), stray);
        EXPECT_EQ(characters.size(), stray.size()) << testing::PrintToString(stray);
    }
}

TEST(Process, EveryKindOfChildHasItsOwnNumber) {
    const int before = _getpid();
    EXPECT_EQ(before, getpid());
    const std::pair<const char *, pid_t (*)()> calls[] = {
        {"fork", fork},
        {"_Fork", _Fork},
        {"clone", [] { return static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }}};
    for (const auto &[label, call] : calls) {
        const pid_t child = call();
        if (child == 0)
            _exit(_getpid() == getpid() && _getpid() != before ? 0 : 1);
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child) << label;
        EXPECT_EQ(status, 0) << label;
    }
}

TEST(Threads, EndOfAThreadCallsItsFunctionOnce) {
    static int ended = 0;
    ThreadsEnd end([](void *count) { ++*static_cast<int *>(count); });
    std::thread([&] { EXPECT_TRUE(end.enter(&ended) && end.enter(&ended)); }).join();
    EXPECT_EQ(ended, 1);
}
