#include "platform/seam/seam.h"

#include <cerrno>
#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/os.h"

using qvledger::Descriptor;

std::string seam::text(const char *format, ...) {
    char room[512];
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(room, sizeof room, format, values);
    va_end(values);
    return room;
}

std::string seam::errnoName() {
    static constexpr struct {
        int number;
        const char *name;
    } kNames[] = {{EACCES, "EACCES"}, {EBADF, "EBADF"},   {EBUSY, "EBUSY"}, {EEXIST, "EEXIST"},
                  {EINVAL, "EINVAL"}, {EISDIR, "EISDIR"}, {EIO, "EIO"},     {ENOENT, "ENOENT"},
                  {ENOSPC, "ENOSPC"}, {EPERM, "EPERM"}};
    for (const auto &[number, name] : kNames)
        if (errno == number)
            return name;
    return text("errno %d", errno);
}

std::string seam::lastError() {
    return text("error %u", static_cast<unsigned>(GetLastError()));
}

void seam::tell(const char *call, const std::string &answer) {
    std::printf("%s\t%s\n", call, answer.c_str());
}

// Until the standard input ends.
static int stay(bool isReady) {
    std::printf("%s\n", isReady ? "ready" : seam::errnoName().c_str());
    std::fflush(stdout);
    while (std::getchar() != EOF)
        continue;
    return isReady ? 0 : 1;
}

// Has a log open as a print server has it, as a program that knows nothing of sharing has, or as another run.
static int occupy(std::string_view how, const char *path) {
    if (how == "append") {
        std::FILE *file = std::fopen(path, "ab");
        const int status = stay(file != nullptr);
        return file != nullptr && std::fclose(file) == 0 ? status : 1;
    }
    char *made = nullptr;
    const Descriptor file(how == "write" ? OS_OpenToAppend(path, &made) : OS_OpenToRead(path));
    std::free(made);
    return stay(file.isOpen() && (how == "write" || OS_LockFile(file.get()) == OS_DONE));
}

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_ChooseLocale(LC_ALL); // as the programs do
    const std::string_view command = argc == 3 ? argv[1] : "";
    if (command == "write" || command == "append" || command == "lock")
        return occupy(command, argv[2]);
    if (argc != 1) {
        std::fputs("usage: seam, in an empty folder; or seam write|append|lock FILE\n", stderr);
        return 1;
    }
    seam::tellOfFiles();
    seam::tellOfHolding();
    seam::tellOfTexts();
    seam::tellOfTimes();
    seam::tellOfAccounts();
    seam::tellOfRegistry();
    seam::tellOfProcess();
    return 0;
}
