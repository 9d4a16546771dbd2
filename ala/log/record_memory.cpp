#include "ala/log/record_memory.h"

#include <algorithm>
#include <limits>

ReadResult readLongValue(LogInput &inoutp_in, std::uint32_t in_length, RecordMemory &inoutp_memory,
                         GEN_string *outp_value) {
    if (in_length == 0 || in_length > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return ReadResult::Cut; // no value is empty, and none can be longer than its record can say
    std::uint8_t *bytes = nullptr;
    for (std::uint32_t have = 0; have < in_length;) {
        const std::uint32_t wanted = nextRoom(in_length, kTrustedBytes, have);
        auto *grown = static_cast<std::uint8_t *>(inoutp_memory.allocateBytes(wanted));
        if (grown == nullptr)
            return ReadResult::NoMemory;
        std::copy_n(bytes, have, grown);
        bytes = grown;
        if (!inoutp_in.read(bytes + have, wanted - have))
            return ReadResult::Cut;
        have = wanted;
    }
    *outp_value = {static_cast<std::int32_t>(in_length), bytes};
    return ReadResult::Whole;
}
