// qvledger-json: a print server's accounting logs as JSON Lines.  Options, messages and statuses are those of
// qvledger, whose driver it shares.
#include <clocale>
#include <new>

#include "platform/os.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/json/json_lines.h"
#include "tool/messages.h"
#include "tool/options.h"
#include "tool/progress.h"
#include "tool/rights.h"
#include "tool/run.h"
#include "tool/stop.h"

constexpr int kStatusLost =
    74; // the lines could not be written; as for an input/output error in other programs

static const char *const kUsage = "Command line usage: qvledger-json [-h] [-V]\n"
                                  "   [-s <start date>]\n"
                                  "   [-e <end date>] [-p <path>]\n"
                                  "   [-O <path>] serverName\n";

namespace {

class JsonWriter final : public LogOutput, JsonEvents {
public:
    bool write(ALA_handle_t handle, ALA_acctLogHandle_t log, std::int32_t date,
               std::FILE *givenStream) override {
        stream = givenStream;
        const ALA_retCode_t ended = writeJsonLines(handle, log, date, givenStream, *this);
        if (ended != ALA_N_NORMAL && ended != ALA_A_LAST_ATTRIBUTE)
            tellFailure(ended, "qvledger-json internal error: ");
        return ended == ALA_A_LAST_ATTRIBUTE;
    }
    bool recordWritten() override {
        countRecord();
        return !mustStop(stream);
    }
    void recordFailed(ALA_retCode_t code) override { tellFailure(code, "unable to read record: "); }

private:
    std::FILE *stream = nullptr;
};

} // namespace

// What concerns the report of lines alone is no option here.
static bool optionsAreValid(const Options &options) {
    return options.errflg == 0 && options.serverName != nullptr && options.dflg == 0 && options.docflg == 0 &&
           options.suppressHeadflg == 0 && options.ofile == nullptr;
}

static int runJson(const Options &options) {
    const bool asksForVersion = options.helpflg == 0 && options.verflg != 0;
    if (!asksForVersion && (options.helpflg != 0 || !optionsAreValid(options))) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    try {
        JsonWriter writer;
        return runWith(options, writer, kStatusLost);
    } catch (const std::bad_alloc &) {
        DisplayMsg(kMsgNoMemory);
        return kStatusNoMemory;
    }
}

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_NoteEndSignals();
    dropLentRights();
    // Messages in the user's language; what the lines hold is the same for everyone.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    LOG_Init("stdout", "E");
    MSG_UsageBegin("qvledg");
    const int status = runJson(readOptions(argc, argv));
    MSG_UsageEnd();
    OS_EndBySignal();
    return status;
}
