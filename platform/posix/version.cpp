#include "platform/os.h"

#include <cstdio>

#include <sys/utsname.h>

#include "platform/posix/guard.h"

using namespace qvledger;

extern "C" {

BOOL GetVersionExA(OSVERSIONINFOA *inoutp_version) {
    if (inoutp_version == nullptr || inoutp_version->dwOSVersionInfoSize != sizeof *inoutp_version)
        return failWith(ERROR_INSUFFICIENT_BUFFER);
    OSVERSIONINFOA version = {sizeof version, 0, 0, 0, VER_PLATFORM_WIN32_NT, ""};
    if (utsname system; uname(&system) == 0) // missing parts of the release stay 0
        static_cast<void>(std::sscanf(system.release, "%9u.%9u.%9u", &version.dwMajorVersion,
                                      &version.dwMinorVersion, &version.dwBuildNumber));
    *inoutp_version = version;
    return 1;
}

} // extern "C"
