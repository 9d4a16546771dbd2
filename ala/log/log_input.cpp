#include "ala/log/log_input.h"

#include <arpa/inet.h>

bool LogInput::readBehind(void *outp_bytes, std::size_t in_size) {
    const int got = _read(fd, outp_bytes, static_cast<unsigned>(in_size));
    if (got > 0)
        taken += got;
    return got > 0 && static_cast<std::size_t>(got) == in_size;
}

bool LogInput::readNetWord(std::uint32_t *outp_word) {
    std::uint32_t word = 0;
    const bool whole = read(&word, sizeof word);
    *outp_word = ntohl(word);
    return whole;
}
