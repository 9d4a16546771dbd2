#include "tool/program.h"

#include <cstdlib>
#include <new>

#include "platform/os.h"
#include "service/log/log.h"
#include "service/messages/message.h"
#include "tool/exit_status.h"
#include "tool/messages.h"
#include "tool/rights.h"

using namespace qvledger;

static int workWithinMemory(int argc, char **argv, int (*work)(int, char **)) {
    try {
        return work(argc, argv);
    } catch (const std::bad_alloc &) {
        DisplayMsg(kMsgNoMemory);
        return kStatusNoMemory;
    }
}

void qvledger::checkSystem() {
    if (const UINT page = GetACP(); page != CP_UTF8)
        DisplayMsg(kMsgCodePage, static_cast<std::int32_t>(page));
    checkZone();
}

void qvledger::checkZone() {
    const char *zone = std::getenv("TZ");
    if (zone == nullptr || OS_KnowsZone(zone) != 0)
        return;
    DisplayMsg(kMsgUnknownZone, zone);
    static_cast<void>(_putenv("TZ=")); // on failure, times are in Coordinated Universal Time
}

int qvledger::runProgram(const char *name, int argc, char **argv, std::initializer_list<int> localeCategories,
                         int (*work)(int argc, char **argv)) {
    setProgramName(name);
    OS_PrepareProcess();
    OS_NoteEndSignals();
    // Messages may go to the file of the report.  Report lines are appended to that file, so messages must be
    // appended, too.
    static_cast<void>(OS_WriteAtEnd(_fileno(stderr)));
    dropLentRights();
    for (const int category : localeCategories)
        OS_ChooseLocale(category);
    LOG_Init("stdout", "E");
    MSG_UsageBegin("qvledg");
    const int status = workWithinMemory(argc, argv, work);
    MSG_UsageEnd();
    LOG_Flush(); // before a signal may end the process
    OS_EndBySignal();
    return status;
}
