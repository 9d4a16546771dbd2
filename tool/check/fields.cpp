#include "tool/check/fields.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

using namespace qvledger;

static int firstError = 0;

int qvledger::outputError() {
    return firstError;
}

// Later calls of the stream can succeed, or give another reason.
static void noteError(int result) {
    if (result == EOF && firstError == 0)
        firstError = errno;
}

std::string qvledger::printable(std::string_view text) {
    std::string shown(text);
    const auto isControl = [](char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f; };
    std::ranges::replace_if(shown, isControl, '?');
    return shown;
}

void qvledger::writeFields(std::initializer_list<std::string_view> fields) {
    const char *separator = "";
    for (const std::string_view field : fields) {
        noteError(std::fputs(separator, stdout));
        noteError(std::fputs(printable(field).c_str(), stdout));
        separator = "\t";
    }
    noteError(std::fputc('\n', stdout));
    noteError(std::fflush(stdout)); // a line at a time, before the next messages
}
