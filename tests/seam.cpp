// Checks the results of the calls of platform/os.h.  docs/platform.md lists those that differ on Windows.
//
//     seam                        works in the current folder; exits with 0 if all results are as expected
//     seam write|append|lock FILE keeps a file open until the end of standard input
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/os.h"

using namespace qvledger;

constexpr bool kOnWindows = QVLEDGER_ON_WINDOWS;
constexpr DWORD kRoom = 512;

static int failures = 0;

static void check(bool isTrue, const char *condition, int line) {
    if (isTrue)
        return;
    ++failures;
    std::printf("tests/seam.cpp:%d: false: %s (errno %d, error %u)\n", line, condition, errno,
                static_cast<unsigned>(GetLastError()));
}
#define CHECK(condition) check(condition, #condition, __LINE__)

static bool fails(std::int64_t result, int reason) {
    return result == -1 && errno == reason;
}
static bool isRefused(BOOL result, LONG reason) {
    return result == 0 && GetLastError() == static_cast<DWORD>(reason);
}

constexpr std::int64_t kFarAway = std::int64_t{3} << 30; // beyond 32-bit positions

static void makeFile(const char *path, const char *text) {
    static_cast<void>(_unlink(path)); // removes the file of an earlier run
    const Descriptor file(OS_MakeFile(path));
    CHECK(_write(file.get(), text, static_cast<unsigned>(std::strlen(text))) >= 0);
}

static int appendTo(const char *path, bool isMade = false) {
    char *made = nullptr;
    const int fd = OS_OpenToAppend(path, &made);
    CHECK((made != nullptr) == isMade);
    std::free(made);
    return fd;
}

static std::int64_t sizeOf(const char *path) {
    OS_fileIdentity identity = {};
    return OS_IdentifyTarget(path, &identity) != 0 ? -1 : identity.size;
}

static void checkNames() {
    for (const char *name : {"new", "moved", "named", "copy", "aside"})
        static_cast<void>(_unlink(name)); // removes the file of an earlier run
    makeFile("five", "12345");
    CHECK(sizeOf("five") == 5 && fails(sizeOf("none"), ENOENT));
    CHECK(fails(OS_MakeFile("five"), EEXIST) && fails(OS_MakeFile("none/five"), ENOENT));
    CHECK(fails(OS_OpenToRead("none"), ENOENT));
    const Descriptor folder(OS_OpenToRead("."));
    CHECK(kOnWindows ? fails(folder.get(), EACCES) : folder.isOpen());
    CHECK(Descriptor(appendTo("new", true)).isOpen() && Descriptor(appendTo("new")).isOpen());
    CHECK(fails(appendTo("."), kOnWindows ? EACCES : EISDIR));
    CHECK(fails(appendTo("none/new"), ENOENT));
    CHECK(OS_MoveName("new", "moved") == 0 && OS_MoveName("moved", "five") == OS_TAKEN);
    CHECK(fails(OS_MoveName("none", "new"), ENOENT));
    CHECK(OS_NameNewFile("moved", "named") == 0 && OS_NameNewFile("named", "five") == OS_TAKEN);
    CHECK(OS_SyncFolderOf(Descriptor(OS_OpenToRead("five")).get()) == 0);
    CHECK(_unlink("named") == 0 && fails(_unlink("named"), ENOENT));
    CHECK(fails(_unlink("."), kOnWindows ? EACCES : EISDIR));
}

static void checkReading() {
    char room[16] = "";
    const Descriptor file(OS_OpenToRead("five"));
    const int fd = file.get();
    CHECK(_read(fd, room, 10) == 5 && _read(fd, room, 10) == 0);
    CHECK(_lseeki64(fd, -2, SEEK_END) == 3);
    CHECK(fails(_lseeki64(fd, -1, SEEK_SET), EINVAL));
    CHECK(_lseeki64(fd, kFarAway, SEEK_SET) == kFarAway);
    CHECK(OS_ReadAt(fd, 3, room, 10) == 2 && OS_ReadAt(fd, kFarAway, room, 10) == 0);
    CHECK(_lseeki64(fd, 0, SEEK_CUR) == kFarAway);
    CHECK(OS_LastByte(fd) == '5');
    CHECK(fails(_write(fd, "x", 1), EBADF));
    CHECK(_isatty(fd) == 0);
    const Descriptor twin(_dup(fd));
    CHECK(_lseeki64(twin.get(), 1, SEEK_SET) == 1 && _lseeki64(fd, 0, SEEK_CUR) == 1);
    const Descriptor again(OS_OpenAgain(fd));
    CHECK(_lseeki64(again.get(), 4, SEEK_SET) == 4 && _lseeki64(fd, 0, SEEK_CUR) == 1);
    CHECK(fails(_close(999), EBADF));
}

static void checkWriting() {
    makeFile("lines", "one\n");
    const Descriptor file(appendTo("lines"));
    const Descriptor other(appendTo("lines"));
    CHECK(_write(other.get(), "two\n", 4) == 4 && _write(file.get(), "three\n", 6) == 6);
    CHECK(sizeOf("lines") == 4 + 4 + 6);
    CHECK(OS_LastByte(Descriptor(OS_OpenAgain(file.get())).get()) == '\n');
    CHECK(_commit(file.get()) == 0);
    CHECK(OS_CutFile(file.get(), 4) == 0 && sizeOf("lines") == 4);
    CHECK(_write(file.get(), "four\n", 5) == 5 && sizeOf("lines") == 9);
    makeFile("empty", "");
    CHECK(OS_LastByte(Descriptor(OS_OpenToRead("empty")).get()) == -1);
}

static bool isFive(const OS_fileIdentity &found) {
    return found.size == 5 && found.names == 1 && found.regular;
}

static void checkIdentity() {
    OS_fileIdentity found = {};
    OS_fileIdentity named = {};
    const Descriptor file(OS_OpenToRead("five"));
    CHECK(OS_IdentifyDescriptor(file.get(), &found) == 0 && isFive(found));
    CHECK(OS_IdentifyName("five", &named) == 0 && isFive(named) && OS_IsSameFile(found, named));
    CHECK(fails(OS_IdentifyName("none", &named), ENOENT) && fails(OS_IdentifyTarget("none", &named), ENOENT));
    CHECK(OS_IdentifyTarget(".", &named) != 0 || !named.regular);
    CHECK(OS_IdentifySettled(file.get(), &found) == 0 && isFive(found));
    const Descriptor copy(OS_MakeFile("copy"));
    OS_GiveAttributes(file.get(), copy.get());
    CHECK(OS_IdentifyDescriptor(copy.get(), &named) == 0 && named.modified == found.modified);
}

static void checkLocks() {
    makeFile("held", "log");
    Descriptor file(OS_OpenToRead("held"));
    OS_fileIdentity identity = {};
    CHECK(OS_IdentifyDescriptor(file.get(), &identity) == 0);
    {
        const Descriptor other(OS_OpenToRead("held"));
        CHECK(OS_LockFile(file.get()) == OS_DONE && OS_LockFile(other.get()) == OS_TAKEN);
        OS_UnlockFile(file.get());
        CHECK(OS_LockFile(other.get()) == OS_DONE);
        OS_UnlockFile(other.get());
        CHECK(OS_IsOpenElsewhere(file.get()) == !kOnWindows);
    }
    CHECK(!OS_IsOpenElsewhere(file.get()));
    CHECK(OS_LockFile(Descriptor(appendTo("held")).get()) == OS_DONE);
    {
        const Descriptor writer(appendTo("held"));
        CHECK(OS_MoveName("held", "aside") == 0);
        CHECK(OS_LockOutWriters(file.get(), "aside", identity) == OS_TAKEN);
    }
    static_cast<void>(OS_LockFile(file.get())); // like a run that deletes the log
    CHECK(OS_LockOutWriters(file.get(), "aside", identity) == OS_DONE);
    Descriptor reader(OS_OpenToRead("aside"));
    CHECK(OS_LockFile(reader.get()) == OS_TAKEN);
    CHECK(OS_RemoveFile(file.get(), "aside") == 0);
    CHECK(OS_IdentifyDescriptor(file.get(), &identity) == 0 && identity.names == (kOnWindows ? 1 : 0));
    file.reset(-1);
    CHECK(kOnWindows ? sizeOf("aside") == 3 : fails(sizeOf("aside"), ENOENT));
    reader.reset(-1);
    CHECK(fails(sizeOf("aside"), ENOENT));
}

static int compareNames(const char *one, const char *two) {
    return _mbsicmp(reinterpret_cast<const unsigned char *>(one),
                    reinterpret_cast<const unsigned char *>(two));
}

static void checkTexts() {
    CHECK(_stricmp("Alpha", "aLPHA") == 0 && _stricmp("B", "_") > 0);
    CHECK(_stricmp("\u00C4RGER", "\u00E4rger") < 0);
    CHECK(_stricmp("\u00CA", "\u00DA") < 0); // last bytes 8A and 9A: one letter in code page 1252
    CHECK(_memicmp("a\0B", "A\0b", 3) == 0 && _memicmp("\u00C4", "\u00E4", 2) < 0);
    CHECK(compareNames("Corp", "CORP") == 0 && compareNames("ab", "ABC") < 0);
    CHECK(kOnWindows ? compareNames("\u00C4RGER", "\u00E4rger") < 0
                     : compareNames("\u00C4RGER", "\u00E4rger") == 0);
    CHECK(compareNames("\u212A", "k") != 0); // the kelvin sign is not the letter K
    const auto *text = reinterpret_cast<const unsigned char *>("\u00E9-x");
    CHECK(_mbschr(text, '-') == text + 2 && _mbschr(text, '!') == nullptr && _mbschr(text, 0) == text + 4);
    char narrow[16] = "";
    const auto convert = [](const wchar_t *wide, char *room, int size) {
        return WideCharToMultiByte(CP_OEMCP, 0, wide, -1, room, size, nullptr, nullptr);
    };
    CHECK(convert(L"Ab", nullptr, 0) == 3 && convert(L"\u00E9", nullptr, 0) == 3);
    CHECK(convert(L"Ab", narrow, 16) == 3 && std::string_view(narrow) == "Ab");
    CHECK(isRefused(convert(L"Ab", narrow, 2), ERROR_INSUFFICIENT_BUFFER));
}

static void checkTimes() {
    _putenv("TZ=EST5EDT");
    _tzset();
    CHECK(_timezone == 18000);
    const auto isTime = [](const std::tm &time, const char *expected) {
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &time);
        return std::string_view(text) == expected;
    };
    std::tm time = {};
    const std::time_t summer = 932'040'000, winter = 916'401'600;
    CHECK(localtime_s(&time, &summer) == 0 && isTime(time, "1999-07-15 08:00:00") && time.tm_isdst > 0);
    CHECK(localtime_s(&time, &winter) == 0 && isTime(time, "1999-01-15 07:00:00") && time.tm_isdst == 0);
}

static void checkOwnCalls() {
    char user[kRoom] = "", computer[kRoom] = "", domain[kRoom] = "", sid[kRoom] = "";
    DWORD userSize = kRoom, computerSize = kRoom, sidSize = kRoom, size = 1;
    SID_NAME_USE use = SidTypeGroup;
    CHECK(GetUserNameA(user, &userSize) != 0 && GetComputerNameA(computer, &computerSize) != 0);
    CHECK(isRefused(LookupAccountNameA(nullptr, computer, sid, &sidSize, domain, &size, &use),
                    kOnWindows ? ERROR_INSUFFICIENT_BUFFER : ERROR_NONE_MAPPED));
    sidSize = size = kRoom;
    CHECK(LookupAccountNameA(nullptr, user, sid, &sidSize, domain, &size, &use) != 0 && use == SidTypeUser);
    size = userSize = kRoom;
    CHECK(LookupAccountSidA(nullptr, sid, user, &userSize, domain, &size, &use) != 0);
    CHECK(userSize == std::strlen(user) + (kOnWindows ? 1 : 0));
    CHECK(_putenv("Seam=small") == 0 && (std::getenv("SEAM") != nullptr) == kOnWindows);
}

static int stay(bool isReady) {
    std::puts(isReady ? "ready" : std::strerror(errno));
    std::fflush(stdout);
    while (std::getchar() != EOF)
        continue;
    return isReady ? 0 : 1;
}

// Opens a file like a print server (write), a program without file sharing (append) or another run (lock).
static int occupy(std::string_view how, const char *path) {
    if (how == "append") {
        std::FILE *file = std::fopen(path, "ab");
        const int status = stay(file != nullptr);
        return file != nullptr && std::fclose(file) == 0 ? status : 1;
    }
    const Descriptor file(how == "write" ? appendTo(path) : OS_OpenToRead(path));
    return stay(file.isOpen() && (how == "write" || OS_LockFile(file.get()) == OS_DONE));
}

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_ChooseLocale(LC_ALL); // as the programs do
    if (argc == 3)
        return occupy(argv[1], argv[2]);
    for (const auto part : {checkNames, checkReading, checkWriting, checkIdentity, checkLocks, checkTexts,
                            checkTimes, checkOwnCalls})
        part();
    return failures == 0 ? 0 : 1;
}
