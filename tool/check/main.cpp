// qvledger-check: tells which accounting logs are whole, which the caller may read, and saves what damage
// left.
#include <clocale>
#include <new>

#include "platform/os.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/check/check_run.h"
#include "tool/messages.h"
#include "tool/rights.h"
#include "tool/run.h"

using namespace qvledger;

static int check(int argc, char **argv) {
    try {
        return runCheck(readOptions(argc, argv, kCheckLetters));
    } catch (const std::bad_alloc &) {
        DisplayMsg(kMsgNoMemory);
        return kStatusNoMemory;
    }
}

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_NoteEndSignals();
    dropLentRights();
    // Messages in the user's language; what the tables hold is the same for everyone.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    LOG_Init("stdout", "E");
    MSG_UsageBegin("qvledg");
    const int status = check(argc, argv);
    MSG_UsageEnd();
    OS_EndBySignal();
    return status;
}
