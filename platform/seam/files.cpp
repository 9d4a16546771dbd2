#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/descriptor.h"
#include "platform/os.h"
#include "platform/seam/seam.h"

using qvledger::Descriptor;
using namespace seam;

constexpr std::int64_t kFarAway = std::int64_t{3} << 30; // no 32-bit position

// A result, or why there is none.
static std::string answer(std::int64_t result) {
    return result == -1 ? "-1, " + errnoName() : std::to_string(result);
}

static std::string openedAnswer(const Descriptor &file) {
    return file.isOpen() ? "opened" : "-1, " + errnoName();
}

static int appendTo(const char *path) {
    char *made = nullptr;
    const int fd = OS_OpenToAppend(path, &made);
    std::free(made);
    return fd;
}

static void makeFile(const char *path, const char *text) {
    const Descriptor file(OS_MakeFile(path));
    if (_write(file.get(), text, static_cast<unsigned>(std::strlen(text))) < 0)
        std::abort();
}

static std::string appendAnswer(const char *path) {
    char *made = nullptr;
    const Descriptor file(OS_OpenToAppend(path, &made));
    std::string result = openedAnswer(file) + (made != nullptr ? ", made" : "");
    std::free(made);
    return result;
}

// ---- By name ----

static std::string statAnswer(const char *path) {
    struct _stat status = {};
    const int result = _stat(path, &status);
    return result != 0 ? answer(result) : text("0, size %lld", static_cast<long long>(status.st_size));
}

static void tellOfNames() {
    makeFile("five", "12345");
    tell("`_stat`, a file of 5 bytes", statAnswer("five"));
    tell("`_stat`, no file", statAnswer("none"));
    tell("`OS_MakeFile`, a name that is taken", openedAnswer(Descriptor(OS_MakeFile("five"))));
    tell("`OS_MakeFile`, in no folder", openedAnswer(Descriptor(OS_MakeFile("none/five"))));
    tell("`OS_OpenToRead`, no file", openedAnswer(Descriptor(OS_OpenToRead("none"))));
    tell("`OS_OpenToRead`, a folder", openedAnswer(Descriptor(OS_OpenToRead("."))));
    tell("`OS_OpenToAppend`, no file", appendAnswer("new"));
    tell("`OS_OpenToAppend`, a file", appendAnswer("new"));
    tell("`OS_OpenToAppend`, a folder", appendAnswer("."));
    tell("`OS_OpenToAppend`, in no folder", appendAnswer("none/new"));
    tell("`OS_MoveName`, to a free name", answer(OS_MoveName("new", "moved")));
    tell("`OS_MoveName`, to a name that is taken", answer(OS_MoveName("moved", "five")));
    tell("`OS_MoveName`, no file", answer(OS_MoveName("none", "new")));
    tell("`OS_NameNewFile`, to a free name", answer(OS_NameNewFile("moved", "named")));
    tell("`OS_NameNewFile`, to a name that is taken", answer(OS_NameNewFile("named", "five")));
    tell("`OS_SyncFolderOf`", answer(OS_SyncFolderOf(Descriptor(OS_OpenToRead("five")).get())));
    tell("`_unlink`, a file", answer(_unlink("named")));
    tell("`_unlink`, no file", answer(_unlink("named")));
    tell("`_unlink`, a folder", answer(_unlink(".")));
}

// ---- By descriptor ----

static void tellOfReading() {
    char room[16] = "";
    const Descriptor file(OS_OpenToRead("five"));
    tell("`_read`, 10 bytes of 5", answer(_read(file.get(), room, 10)));
    tell("`_read`, at the end", answer(_read(file.get(), room, 10)));
    tell("`_lseeki64`, 2 before the end", answer(_lseeki64(file.get(), -2, SEEK_END)));
    tell("`_lseeki64`, before the beginning", answer(_lseeki64(file.get(), -1, SEEK_SET)));
    tell("`_lseeki64`, to 3 GiB", answer(_lseeki64(file.get(), kFarAway, SEEK_SET)));
    tell("`OS_ReadAt`, at 3 of 5", answer(OS_ReadAt(file.get(), 3, room, 10)));
    tell("`OS_ReadAt`, behind the end", answer(OS_ReadAt(file.get(), kFarAway, room, 10)));
    tell("`OS_ReadAt`, the position afterwards", answer(_lseeki64(file.get(), 0, SEEK_CUR)));
    tell("`OS_LastByte`, \"12345\"", answer(OS_LastByte(file.get())));
    tell("`_write`, open to be read", answer(_write(file.get(), "x", 1)));
    tell("`_isatty`, a file", answer(_isatty(file.get())));
    const Descriptor twin(_dup(file.get()));
    static_cast<void>(_lseeki64(twin.get(), 1, SEEK_SET)); // shows at the other one
    tell("`_dup`, a move of the twin's position", answer(_lseeki64(file.get(), 0, SEEK_CUR)));
    const Descriptor again(OS_OpenAgain(file.get()));
    static_cast<void>(_lseeki64(again.get(), 4, SEEK_SET)); // does not
    tell("`OS_OpenAgain`, a move of its position", answer(_lseeki64(file.get(), 0, SEEK_CUR)));
    tell("`_close`, what is closed", answer(_close(999)));
}

static void tellOfWriting() {
    makeFile("lines", "one\n");
    const Descriptor file(appendTo("lines"));
    const Descriptor other(appendTo("lines"));
    static_cast<void>(_write(other.get(), "two\n", 4)); // what the next one comes behind
    tell("`_write`, to append behind another one's bytes",
         answer(_write(file.get(), "three\n", 6)) + ", then " + statAnswer("lines"));
    const Descriptor again(OS_OpenAgain(file.get()));
    tell("`OS_OpenAgain`, of one to append", openedAnswer(again));
    tell("`OS_LastByte`, behind a line", answer(OS_LastByte(again.get())));
    tell("`_commit`", answer(_commit(file.get())));
    tell("`OS_CutFile`, to 4 bytes", answer(OS_CutFile(file.get(), 4)) + ", then " + statAnswer("lines"));
    static_cast<void>(_write(file.get(), "four\n", 5)); // told by the next line
    tell("`_write`, to append after a cut", statAnswer("lines"));
    const Descriptor empty(appendTo("empty"));
    const Descriptor read(OS_OpenToRead("empty"));
    tell("`OS_LastByte`, of nothing", text("%d", OS_LastByte(read.get())));
}

static std::string identityAnswer(int result, const OS_fileIdentity &found) {
    return result != 0 ? answer(result)
                       : text("0, size %lld, names %d, %s", static_cast<long long>(found.size),
                              static_cast<int>(found.names), found.regular ? "regular" : "not regular");
}

static void tellOfIdentity() {
    OS_fileIdentity found = {};
    OS_fileIdentity named = {};
    const Descriptor file(OS_OpenToRead("five"));
    tell("`OS_IdentifyDescriptor`", identityAnswer(OS_IdentifyDescriptor(file.get(), &found), found));
    tell("`OS_IdentifyName`", identityAnswer(OS_IdentifyName("five", &named), named));
    tell("`OS_IsSameFile`, by descriptor and by name", answer(OS_IsSameFile(found, named) ? 1 : 0));
    tell("`OS_IdentifyName`, no file", identityAnswer(OS_IdentifyName("none", &named), named));
    tell("`OS_IdentifyTarget`, no file", identityAnswer(OS_IdentifyTarget("none", &named), named));
    tell("`OS_IdentifyTarget`, a folder is regular",
         OS_IdentifyTarget(".", &named) == 0 && named.regular ? "yes" : "no");
    tell("`OS_IdentifySettled`", identityAnswer(OS_IdentifySettled(file.get(), &found), found));
    const Descriptor copy(OS_MakeFile("copy"));
    OS_GiveAttributes(file.get(), copy.get());
    tell("`OS_GiveAttributes`, the same last change",
         OS_IdentifyDescriptor(copy.get(), &named) == 0 && named.modified == found.modified ? "yes" : "no");
}

void seam::tellOfFiles() {
    tellOfNames();
    tellOfReading();
    tellOfWriting();
    tellOfIdentity();
}

// ---- Against others ----

static const char *resultName(int result) {
    return result == OS_DONE ? "OS_DONE" : result == OS_TAKEN ? "OS_TAKEN" : "OS_REFUSED";
}

static void tellOfRemoval(Descriptor &held, Descriptor &reader, const char *path) {
    OS_fileIdentity found = {};
    tell("`OS_RemoveFile`, held against writers", answer(OS_RemoveFile(held.get(), path)));
    const int result = OS_IdentifyDescriptor(held.get(), &found);
    tell("`OS_RemoveFile`, names afterwards", result == 0 ? text("%d", static_cast<int>(found.names)) : "-1");
    held.reset(-1);
    tell("`OS_RemoveFile`, while a reader has it open", statAnswer(path));
    reader.reset(-1);
    tell("`OS_RemoveFile`, once nobody has", statAnswer(path));
}

void seam::tellOfHolding() {
    makeFile("held", "log");
    Descriptor file(OS_OpenToRead("held"));
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(file.get(), &identity) != 0)
        std::abort();
    {
        const Descriptor other(OS_OpenToRead("held"));
        tell("`OS_LockFile`", resultName(OS_LockFile(file.get())));
        tell("`OS_LockFile`, of what is locked", resultName(OS_LockFile(other.get())));
        OS_UnlockFile(file.get());
        tell("`OS_LockFile`, of what was unlocked", resultName(OS_LockFile(other.get())));
        OS_UnlockFile(other.get());
        tell("`OS_IsOpenElsewhere`, open elsewhere", answer(OS_IsOpenElsewhere(file.get())));
    }
    tell("`OS_IsOpenElsewhere`, not open elsewhere", answer(OS_IsOpenElsewhere(file.get())));
    tell("`OS_LockFile`, of one to append", resultName(OS_LockFile(Descriptor(appendTo("held")).get())));
    {
        const Descriptor writer(appendTo("held"));
        tell("`OS_MoveName`, what is open", answer(OS_MoveName("held", "aside")));
        tell("`OS_HoldAgainstWriters`, open to be written",
             resultName(OS_HoldAgainstWriters(file.get(), "aside", identity)));
    }
    static_cast<void>(OS_LockFile(file.get())); // as the run has it that deletes
    tell("`OS_HoldAgainstWriters`", resultName(OS_HoldAgainstWriters(file.get(), "aside", identity)));
    Descriptor other(OS_OpenToRead("aside"));
    tell("`OS_LockFile`, of what is held against writers", resultName(OS_LockFile(other.get())));
    tellOfRemoval(file, other, "aside");
}
