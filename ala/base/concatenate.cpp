#include "ala/base/concatenate.h"

#include <cstdlib>
#include <cstring>

char *_ALA_AddChar(const char *inp_string, const char *inp_str) {
    const std::size_t head = std::strlen(inp_string);
    const std::size_t tail = std::strlen(inp_str) + 1;
    auto *joined = static_cast<char *>(std::malloc(head + tail));
    if (joined == nullptr)
        return nullptr;
    std::memcpy(joined, inp_string, head);
    std::memcpy(joined + head, inp_str, tail);
    return joined;
}
