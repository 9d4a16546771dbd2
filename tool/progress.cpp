#include "tool/progress.h"

#include <chrono>
#include <cstdio>
#include <cstring>

#include "platform/os.h"

using namespace qvledger;

constexpr std::int64_t kRedrawAfter = 250; // milliseconds

namespace {

struct State {
    bool shows = false;
    int width = 0; // columns of the line on the terminal; 0 if there is no line
    std::int32_t numLogs = 0;
    std::int32_t logNumber = 0; // number of the current log, from 1
    std::int32_t date = 0;
    std::int64_t records = 0;
    std::int64_t started = 0; // milliseconds
    std::int64_t lastDrawn = 0;
};

} // namespace

static State state;

static std::int64_t milliseconds() {
    using namespace std::chrono;
    return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

static bool isSetTo(const char *variable, const char *wanted) {
    const char *value = OS_ProgramVariable(variable);
    return value != nullptr && std::strcmp(value, wanted) == 0;
}

void qvledger::startProgress(bool reportIsFile, std::int32_t numLogs) {
    state = {};
    state.shows = _isatty(_fileno(stderr)) != 0 && reportIsFile && !isSetTo("QV_PROGRESS", "0") &&
                  !isSetTo("QV_LOG", "stderr");
    state.numLogs = numLogs;
    state.started = milliseconds();
    state.lastDrawn = state.started; // first drawn after kRedrawAfter, so a short run shows no line
}

static void drawIfDue() {
    const std::int64_t now = milliseconds();
    if (now - state.lastDrawn < kRedrawAfter)
        return;
    state.lastDrawn = now;
    const std::int64_t perSecond = state.records * 1000 / (now - state.started);
    char line[80];
    const int width = std::snprintf(line, sizeof line, "%08d  log %d of %d  %lld records/s", state.date,
                                    state.logNumber, state.numLogs, static_cast<long long>(perSecond));
    // Spaces erase the rest of a longer line, because not every console has escape sequences.
    std::fprintf(stderr, "\r%-*s", state.width, line);
    state.width = width;
}

void qvledger::progressToLog(std::int32_t date) {
    if (!state.shows)
        return;
    state.date = date;
    ++state.logNumber;
    drawIfDue();
}

void qvledger::countRecord() {
    if (!state.shows)
        return;
    ++state.records;
    drawIfDue();
}

void qvledger::redrawProgress() {
    if (state.shows)
        drawIfDue();
}

void qvledger::eraseProgress() {
    if (state.width != 0)
        std::fprintf(stderr, "\r%*s\r", state.width, "");
    state.width = 0;
}

void qvledger::endProgress() {
    eraseProgress();
    state.shows = false;
}
