#include "ala/log/record_memory.h"

#include <algorithm>
#include <limits>

using namespace qvledger;

ReadResult qvledger::readLongValue(LogInput &in, std::uint32_t length, RecordMemory &memory,
                                   GEN_string *value) {
    if (length == 0 || length > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return ReadResult::Cut; // no value is empty, and none can be longer than its record can say
    std::uint8_t *bytes = nullptr;
    for (std::uint32_t have = 0; have < length;) {
        const std::uint32_t wanted = nextRoom(length, kTrustedBytes, have);
        auto *grown = static_cast<std::uint8_t *>(memory.allocateBytes(wanted));
        if (grown == nullptr)
            return ReadResult::NoMemory;
        std::copy_n(bytes, have, grown);
        bytes = grown;
        if (!in.read(bytes + have, wanted - have))
            return ReadResult::Cut;
        have = wanted;
    }
    *value = {static_cast<std::int32_t>(length), bytes};
    return ReadResult::Whole;
}
