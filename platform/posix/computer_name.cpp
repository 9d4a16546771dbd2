#include "platform/posix/computer_name.h"

#include <algorithm>

#include <sys/utsname.h>

#include "platform/posix/ascii_case.h"
#include "platform/posix/guard.h"
#include "platform/posix/name_buffer.h"

using namespace qvledger;

constexpr std::size_t kComputerNameLength = 15;

std::string qvledger::computerNameOf(std::string_view hostName) {
    std::string name(hostName.substr(0, hostName.find('.')).substr(0, kComputerNameLength));
    std::transform(name.begin(), name.end(), name.begin(), asciiUpper);
    return name;
}

std::string qvledger::computerName() {
    utsname system;
    return uname(&system) == 0 ? computerNameOf(system.nodename) : "";
}

extern "C" {

BOOL GetComputerNameA(char *outp_name, DWORD *inoutp_size) {
    return guarded([&] {
        const std::string name = computerName();
        if (inoutp_size == nullptr || name.empty())
            return failWith(ERROR_INVALID_PARAMETER);
        NameBuffer out(outp_name, inoutp_size, name);
        if (!out.fits()) {
            out.setNeeded();
            return failWith(ERROR_BUFFER_OVERFLOW);
        }
        out.write();
        return 1;
    });
}

} // extern "C"
