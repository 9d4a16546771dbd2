#include "tool/check/fields.h"

#include <cstdio>
#include <string>

#include "platform/os.h"
#include "service/visible.h"

using namespace qvledger;

static int firstError = 0;

int qvledger::outputError() {
    return firstError;
}

// Notes a failed write.  Keeps the first error, because later writes may succeed or fail for another reason.
static void noteError(int result) {
    if (result == EOF && firstError == 0)
        firstError = OS_WriteError();
}

static std::string visible(std::string_view text) {
    std::string shown;
    escapeControls(text, [&](std::string_view piece) { shown += piece; });
    return shown;
}

void qvledger::writeFields(std::initializer_list<std::string_view> fields) {
    const char *separator = "";
    for (const std::string_view field : fields) {
        noteError(std::fputs(separator, stdout));
        noteError(std::fputs(visible(field).c_str(), stdout));
        separator = "\t";
    }
    noteError(std::fputc('\n', stdout));
    noteError(std::fflush(stdout)); // messages about the line must follow the line
}
