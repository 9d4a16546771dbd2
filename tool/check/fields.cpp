#include "tool/check/fields.h"

#include <cstdio>

using namespace qvledger;

void qvledger::writeFields(std::initializer_list<std::string_view> fields) {
    const char *separator = "";
    for (const std::string_view field : fields) {
        std::fputs(separator, stdout);
        for (const char byte : field)
            std::fputc(static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f ? '?' : byte, stdout);
        separator = "\t";
    }
    std::fputc('\n', stdout);
}
