#include "ala/log/log_input.h"

#include <algorithm>

#include <arpa/inet.h>

bool LogInput::readBehind(void *outp_bytes, std::size_t in_size) {
    const int got = _read(fd, outp_bytes, static_cast<unsigned>(in_size));
    if (got > 0)
        taken += got;
    nothingLeft = got == 0 && in_size != 0;
    return got > 0 && static_cast<std::size_t>(got) == in_size;
}

bool LogInput::readNetWord(std::uint32_t *outp_word) {
    std::uint32_t word = 0;
    const bool whole = read(&word, sizeof word);
    *outp_word = ntohl(word);
    return whole;
}

std::uint32_t growRoom(std::uint32_t in_count, std::uint32_t in_trusted, std::uint32_t in_room) {
    constexpr std::uint32_t kGrowth = 4;
    const std::uint64_t most = std::max<std::uint64_t>(in_trusted, std::uint64_t{kGrowth} * in_room);
    std::uint32_t room = in_count;
    while (room > most)
        room = room / kGrowth + 1;
    return room;
}
