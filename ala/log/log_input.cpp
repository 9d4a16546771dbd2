#include "ala/log/log_input.h"

#include <algorithm>
#include <cerrno>

#include "platform/byte_order.h"

using namespace qvledger;

bool LogInput::readBehind(void *bytes, std::size_t size) {
    const int got = readLog(fd, bytes, size);
    if (got > 0)
        taken += got;
    else if (got < 0)
        failure = errno;
    nothingLeft = got == 0 && size != 0;
    return got > 0 && static_cast<std::size_t>(got) == size;
}

bool LogInput::readNetWord(std::uint32_t *givenWord) {
    std::uint32_t word = 0;
    const bool whole = read(&word, sizeof word);
    *givenWord = fromNetworkOrder(word);
    return whole;
}

std::uint32_t qvledger::growRoom(std::uint32_t count, std::uint32_t trusted, std::uint32_t givenRoom) {
    constexpr std::uint32_t kGrowth = 4;
    const std::uint64_t most = std::max<std::uint64_t>(trusted, std::uint64_t{kGrowth} * givenRoom);
    std::uint32_t room = count;
    while (room > most)
        room = room / kGrowth + 1;
    return room;
}
