// The platform layer's account names, texts, environment, process ids and threads.
#include <gtest/gtest.h>

#include <csignal>
#include <thread>
#include <vector>

#include <malloc.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/os.h"
#include "platform/posix/computer_name.h"
#include "platform/posix/name_service.h"
#include "service/thread.h"

using namespace qvledger;

TEST(Identity, AccountAndComputerNamesAreSplit) {
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

TEST(Identity, CallsWithTooSmallABufferFail) {
    char name[512];
    DWORD size = 1, whole = sizeof name;
    EXPECT_TRUE(GetUserNameA(name, &size) == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    EXPECT_TRUE(GetUserNameA(name, &whole) && size == whole);
    size = 1;
    EXPECT_TRUE(GetComputerNameA(name, &size) == 0 && GetLastError() == ERROR_BUFFER_OVERFLOW);
}

TEST(Texts, CaseFoldingDoesNotDependOnTheLocale) {
    const auto bytes = [](const char *text) { return reinterpret_cast<const unsigned char *>(text); };
    EXPECT_NE(_mbsicmp(bytes("\xC4"), bytes("\xE4")), 0); // invalid UTF-8, so not letters
    EXPECT_NE(_mbsicmp(bytes("\u0130"), bytes("i")), 0);
    const unsigned char *text = bytes("\xC3\xA9\xA9\xE9");
    EXPECT_EQ(_mbschr(text, 0xE9), text);
}

TEST(Process, TheKeptEnvironmentIsRestoredAndSettingTakesLittleMemory) {
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

TEST(Process, EveryKindOfChildHasItsOwnProcessId) {
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

TEST(Threads, AThreadsEndFunctionIsCalledOnce) {
    static int ended = 0;
    ThreadsEnd end([](void *count) { ++*static_cast<int *>(count); });
    std::thread([&] { EXPECT_TRUE(end.enter(&ended) && end.enter(&ended)); }).join();
    EXPECT_EQ(ended, 1);
}
