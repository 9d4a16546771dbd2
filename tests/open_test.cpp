// Opening a log: which file a date selects, damaged headers, the lock before a deletion, and closing.
#include <functional>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ala/driver/deletion.h"
#include "ala/log/open_log.h"
#include "tests/support/facility.h"

namespace fs = std::filesystem;
using namespace samples;
using testing::ElementsAre;
using testing::EndsWith;

static std::ptrdiff_t openFiles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

class Open : public Facility {
protected:
    // Opens and closes the log for a date.  Returns "TAIL of DATE", or "code N" if no log opens.
    std::string opened(const ALA_time *logDate) {
        const ALA_retCode_t code = ALA_Open(handle, logDate, &log);
        if (code != ALA_N_NORMAL)
            return "code " + std::to_string(code);
        const std::string tail = fs::path(log->logName).extension().string().substr(1);
        const std::string date = std::to_string(log->date);
        close();
        return tail + " of " + date;
    }
};

TEST_F(Open, TheDateSelectsTheFile) {
    const NextDay itIs;
    const ALA_time today = {2001, 2, 4}, other = {2001, 2, 2}, lastYear = {2000, 2, 4},
                   lastMonth = {2001, 1, 4};
    EXPECT_EQ(opened(nullptr), "code 6") << "no log at all";
    EXPECT_EQ(opened(&today), "code 6") << "today without a current log";
    layCurrentLog();
    EXPECT_EQ(opened(&kDay), "current of 20010203") << "used for the day of its last change";
    EXPECT_EQ(opened(&today), "current of 20010204") << "used for today, whatever its date";
    EXPECT_EQ(opened(nullptr), "current of 20010203");
    for (const ALA_time *date : {&other, &lastYear, &lastMonth})
        EXPECT_EQ(opened(date), "code 6");
    for (const char *tail : {kDayTail, "20010204", "abc"})
        Log().save(path(tail));
    EXPECT_EQ(opened(&kDay), "20010203 of 20010203") << "a dated log is preferred";
    EXPECT_EQ(opened(&today), "current of 20010204") << "except today";
    EXPECT_EQ(opened(nullptr), "abc of 0") << "the oldest";
}

TEST_F(Open, AHeaderCutAnywhereFailsToRead) {
    const Log whole({.accessList = {pack(anyUserEntry()), pack(userEntry("x", "y"))}});
    ASSERT_EQ(open(whole), ALA_N_NORMAL);
    EXPECT_EQ(lseek(log->fd, 0, SEEK_CUR), static_cast<long>(whole.size())) << "at the first record";
    for (std::size_t size = 0; size < whole.size(); size++)
        ASSERT_EQ(open(Log(whole).cutTo(size)), ALA_A_FAIL_READ_LOG_FILE) << "cut to " << size;
}

TEST_F(Open, EachDamagedHeaderHasItsCode) {
    const Bytes any = pack(anyUserEntry());
    AccessEntry bad = anyUserEntry();
    bad.privilege = 4;
    const struct {
        const char *label;
        LogHeader header;
        ALA_retCode_t code;
    } cases[] = {
        {"count of attributes 0", {.numAttr = 0}, ALA_A_BAD_NUMATTR_VALUE},
        {"no entries", {.accessList = {}}, ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE},
        {"entries of another type", {.accessListType = INTEGER}, ALA_A_ODPUNPACK_ERROR},
        {"entries of an unknown type", {.accessListType = 999}, ALA_A_ODPUNPACK_ERROR},
        {"one entry fewer than stated", {.numAttrVal = 2}, ALA_A_FAIL_READ_LOG_FILE},
        {"huge count of entries", {.numAttrVal = 0xFFFFFFFF}, ALA_A_FAIL_READ_LOG_FILE},
        {"entry of length 0", {.accessList = {any, Value("", 0)}}, ALA_A_FAIL_READ_LOG_FILE},
        {"entry of length 2^32-1", {.accessList = {Value(any, 0xFFFFFFFF)}}, ALA_A_FAIL_READ_LOG_FILE},
        {"damaged entry after another", {.accessList = {any, any, Value("....")}}, ALA_A_ODPUNPACK_ERROR},
        {"entry with an extra byte", {.accessList = {any + '\0'}}, ALA_A_ODPUNPACK_ERROR},
        {"bad privilege", {.accessList = {pack(bad), any}}, ALA_A_ODPUNPACK_ERROR},
        {"bad privilege after an entry that admits", {.accessList = {any, pack(bad)}}, ALA_N_NORMAL},
    };
    const std::ptrdiff_t before = openFiles();
    for (const auto &c : cases) {
        EXPECT_EQ(open(Log(c.header)), c.code) << c.label;
        close();
        EXPECT_EQ(openFiles(), before) << c.label;
    }
    takeLog();
    open(Log({.numAttr = 0}));
    EXPECT_THAT(takeLog(), ElementsAre("Return code for ALA__LookupPermission is ALA_A_BAD_NUMATTR_VALUE",
                                       EndsWith("alpha.20010203, date 20010203: the header cannot be read"),
                                       "ALA__LookupPermission failed in ALA_Open"));
}

TEST_F(Open, OnlyAnAdmittedCallerGetsTheLock) {
    static std::function<void(const char *)> whenLocked;
    const auto toDelete = [&](const std::function<void(const char *)> &action) {
        takeLog();
        whenLocked = action;
        return qvledger::openForDeletion(
            handle, &kDay,
            [](int, const char *name) {
                whenLocked(name);
                return qvledger::LockResult::Locked;
            },
            &log);
    };
    const Log refusing({.accessList = {pack(userEntry("nobody", "NOWHERE"))}});
    refusing.save(path());
    EXPECT_EQ(toDelete([](auto) { ADD_FAILURE() << "its lock could block other runs"; }), 7);
    setLogLevel("6");
    ASSERT_EQ(open(Log({.accessList = {pack(anyUserEntry())}})), ALA_N_NORMAL);
    const std::vector<std::string> details = takeLog('6');
    close();
    ASSERT_EQ(toDelete([](auto) {}), ALA_N_NORMAL);
    EXPECT_EQ(takeLog('6'), details) << "an unchanged header is logged once";
    EXPECT_EQ(lseek(log->fd, 0, SEEK_CUR), static_cast<long>(Log().size()));
    close();
    int locks = 0;
    const auto replaceOnce = [&](const char *name) {
        if (++locks != 1)
            return;
        fs::rename(name, path("old"));
        Log({.numAttr = 1, .accessList = {pack(anyUserEntry())}}).save(name);
    };
    ASSERT_EQ(toDelete(replaceOnce), ALA_N_NORMAL);
    OS_fileIdentity open = {}, named = {};
    EXPECT_TRUE(OS_IdentifyDescriptor(log->fd, &open) == 0 &&
                OS_IdentifyTarget(path().c_str(), &named) == 0 && OS_IsSameFile(open, named))
        << "the file that now has the name";
    close();
    EXPECT_EQ(toDelete([&](const char *name) { samples::writeFile(name, refusing.bytes()); }), 7);
    Log({.accessList = {pack(anyUserEntry())}}).save(path());
    {
        const Scripted version(script::GetVersionExA, [&](OSVERSIONINFOA *out) {
            samples::writeFile(path(), refusing.bytes());
            out->dwPlatformId = VER_PLATFORM_WIN32_NT;
            return 1;
        });
        EXPECT_EQ(toDelete([](auto) {}), 7) << "changed after its header was read for the first check";
    }
    fs::remove(path());
    layCurrentLog();
    const auto rename = [&](const char *name) { fs::rename(name, path()); };
    EXPECT_EQ(toDelete(rename), ALA_N_NORMAL) << "renamed to its day meanwhile";
    close();
}

TEST_F(Open, SpecialFilesAreRefusedWithoutBlocking) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(opened(&kDay), "code 6") << "pipe";
    for (const fs::path &target : {path(), fs::path("nowhere"), fs::path("/dev/zero"), fs::path("/")}) {
        fs::remove(path());
        fs::create_symlink(target, path());
        EXPECT_EQ(opened(&kDay), target == "/" ? "code 11" : "code 6") << "link to " << target;
    }
}

TEST_F(Open, InvalidLogHandlesAreRefused) {
    EXPECT_EQ(ALA_Close(handle, nullptr), ALA_A_INVALID_LOG_HANDLE);
    EXPECT_EQ(ALA_Close(handle, &log), ALA_A_INVALID_LOG_HANDLE);
    ASSERT_EQ(open(Log()), ALA_N_NORMAL);
    ALA_record_t got = nullptr;
    log->pid++;
    EXPECT_EQ(ALA_Close(handle, &log), ALA_A_INVALID_LOG_HANDLE);
    EXPECT_EQ(ALA_GetNextJobRecord(handle, &log, &got), ALA_A_INVALID_LOG_HANDLE);
    log->pid--;
}
