// Calls that need only other calls of platform/os.h.
#include <chrono>

#include "platform/os.h"

int OS_LastByte(int fd) {
    unsigned char last = 0;
    return _lseeki64(fd, -1, SEEK_END) >= 0 && _read(fd, &last, 1) == 1 ? last : -1;
}

constexpr std::int64_t kSecond = 1'000'000'000;
// How long to wait until file times have certainly advanced: twice the longest step.  The systems' clocks
// advance in steps of up to 20 ms (kFineStep); file systems without fractions of a second, such as FAT, in
// steps of up to 2 s (kCoarseStep).
constexpr std::int64_t kFineStep = kSecond / 25;
constexpr std::int64_t kCoarseStep = 4 * kSecond;
constexpr int kLooks = 3; // attempts for a file that keeps changing

int OS_IdentifySettled(int fd, OS_fileIdentity *identity) {
    using namespace std::chrono;
    for (int look = 0; look < kLooks; ++look) {
        // Read before the file's times, so that a later change gets a later time.
        const std::int64_t now = nanoseconds(system_clock::now().time_since_epoch()).count();
        if (OS_IdentifyDescriptor(fd, identity) != 0)
            return -1;
        const bool isCoarse = identity->modified % kSecond == 0 && identity->changed % kSecond == 0;
        const std::int64_t step = isCoarse ? kCoarseStep : kFineStep;
        // Not signed before the subtraction, because `changed` can have overflowed.
        const auto age = static_cast<std::int64_t>(static_cast<std::uint64_t>(now) -
                                                   static_cast<std::uint64_t>(identity->changed));
        if (age > step || age < -step) // a time far in the future comes from another machine's clock
            return 0;
        OS_Sleep(static_cast<int>(step / 1'000'000));
    }
    return OS_IdentifyDescriptor(fd, identity);
}
