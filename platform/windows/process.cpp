#include "platform/os.h"

#include <cstdlib>
#include <initializer_list>
#include <string_view>

static void passOver(const wchar_t *, const wchar_t *, const wchar_t *, unsigned, std::uintptr_t) {}

void OS_PrepareProcess() {
    // A call with a closed descriptor must fail instead of ending the program.
    _set_invalid_parameter_handler(passOver);
    _fmode = _O_BINARY;
    for (std::FILE *stream : {stdin, stdout, stderr})
        if (_fileno(stream) >= 0)
            static_cast<void>(_setmode(_fileno(stream), _O_BINARY)); // a closed stream has no descriptor
    // Gives the numbers of closed standard streams to descriptors that fail every write, as closed
    // descriptors do.
    constexpr int kStandardError = 2;
    int fd = 0;
    while ((fd = _open("NUL", _O_RDONLY)) != -1 && fd <= kStandardError)
        continue;
    if (fd != -1)
        static_cast<void>(_close(fd));
}

void OS_ChooseLocale(int) {}

int OS_WatchForks(void (*)()) {
    return 0; // Windows has no fork
}

const char *OS_ProgramName() {
    const std::string_view path(_pgmptr != nullptr ? _pgmptr : "");
    return path.data() + path.find_last_of("\\/") + 1; // without a folder, npos + 1 is 0
}
