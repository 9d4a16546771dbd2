// Checks those results of the calls of platform/os.h that differ between the systems, or that each system
// reaches in its own way.  docs/platform.md lists the differences.
//
//     seam                        works in the current folder; exits with 0 if all results are as expected
//     seam write|append|lock FILE keeps a file open until the end of standard input
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/os.h"

using namespace qvledger;

constexpr bool kOnWindows = QVLEDGER_ON_WINDOWS;

static int failures = 0;

static void check(bool isTrue, const char *condition, int line) {
    if (isTrue)
        return;
    ++failures;
    std::printf("tests/seam.cpp:%d: false: %s (errno %d, error %u)\n", line, condition, errno,
                static_cast<unsigned>(GetLastError()));
}
#define CHECK(condition) check(condition, #condition, __LINE__)

static bool fails(int result, int reason) {
    return result == -1 && errno == reason;
}

static int appendTo(const char *path) {
    char *made = nullptr;
    const int fd = OS_OpenToAppend(path, &made);
    std::free(made);
    return fd;
}

static std::int64_t sizeOf(const char *path) {
    OS_fileIdentity identity = {};
    return OS_IdentifyTarget(path, &identity) == 0 ? identity.size : -1;
}

static void checkFiles() {
    for (const char *name : {"log", "moved", "aside"})
        static_cast<void>(_unlink(name)); // removes the file of an earlier run
    const int folder = OS_OpenToRead(".");
    CHECK(kOnWindows ? fails(folder, EACCES) : Descriptor(folder).isOpen());
    CHECK(fails(appendTo("."), kOnWindows ? EACCES : EISDIR));
    CHECK(fails(_unlink("."), kOnWindows ? EACCES : EISDIR));
    const Descriptor file(appendTo("log"));
    const Descriptor other(appendTo("log"));
    CHECK(_write(other.get(), "two\n", 4) == 4 && _write(file.get(), "three\n", 6) == 6);
    CHECK(OS_CutFile(file.get(), 4) == 0 && sizeOf("log") == 4);
    CHECK(_write(file.get(), "four\n", 5) == 5 && sizeOf("log") == 9);
    CHECK(OS_LastByte(Descriptor(OS_OpenAgain(file.get())).get()) == '\n');
    CHECK(fails(OS_MakeFile("log"), EEXIST) && fails(OS_OpenToRead("none"), ENOENT));
    OS_fileIdentity found = {};
    CHECK(OS_IdentifySettled(file.get(), &found) == 0 && found.names == 1 && found.regular);
    const Descriptor copy(OS_MakeFile("moved"));
    OS_GiveAttributes(file.get(), copy.get());
    OS_fileIdentity named = {};
    CHECK(OS_IdentifyName("moved", &named) == 0 && named.modified == found.modified);
    CHECK(!OS_IsSameFile(found, named) && OS_MoveName("log", "moved") == OS_TAKEN);
}

static void checkLocks() {
    Descriptor file(OS_OpenToRead("log"));
    OS_fileIdentity identity = {};
    CHECK(OS_IdentifyDescriptor(file.get(), &identity) == 0);
    {
        const Descriptor writer(appendTo("log"));
        CHECK(OS_LockFile(file.get()) == OS_DONE && OS_LockFile(writer.get()) == OS_TAKEN);
        CHECK(OS_IsOpenElsewhere(file.get()) == !kOnWindows);
        CHECK(OS_MoveName("log", "aside") == OS_DONE);
        CHECK(OS_LockOutWriters(file.get(), "aside", identity) == OS_TAKEN);
    }
    CHECK(!OS_IsOpenElsewhere(file.get()));
    static_cast<void>(OS_LockFile(file.get())); // as a run does that deletes the log
    CHECK(OS_LockOutWriters(file.get(), "aside", identity) == OS_DONE);
    Descriptor reader(OS_OpenToRead("aside"));
    CHECK(OS_LockFile(reader.get()) == OS_TAKEN);
    CHECK(OS_RemoveFile(file.get(), "aside") == 0);
    CHECK(OS_IdentifyDescriptor(file.get(), &identity) == 0 && identity.names == (kOnWindows ? 1 : 0));
    file.reset(-1);
    CHECK(sizeOf("aside") == (kOnWindows ? 9 : -1));
    reader.reset(-1);
    CHECK(sizeOf("aside") == -1);
}

static void checkTexts() {
    const auto *one = reinterpret_cast<const unsigned char *>("\u00C4RGER");
    const auto *two = reinterpret_cast<const unsigned char *>("\u00E4rger");
    CHECK(kOnWindows ? _mbsicmp(one, two) < 0 : _mbsicmp(one, two) == 0);
    CHECK(GetACP() == CP_UTF8 && OS_KnowsZone("Europe/Berlin") == !kOnWindows);
    CHECK(OS_KnowsZone("UTC") && OS_KnowsZone("EST5EDT") && OS_KnowsZone("CET-1"));
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
    for (const auto part : {checkFiles, checkLocks, checkTexts})
        part();
    return failures == 0 ? 0 : 1;
}
