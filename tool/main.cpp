// qvledger: reports a print server's accounting logs.
#include <clocale>

#include "platform/os.h"
#include "service/log.h"
#include "service/message.h"
#include "tool/options.h"
#include "tool/rights.h"
#include "tool/run.h"

using namespace qvledger;

int main(int argc, char **argv) {
    OS_PrepareProcess();
    OS_NoteEndSignals();
    dropLentRights();
    std::setlocale(LC_ALL, "");
    LOG_Init("stdout", "E");
    MSG_UsageBegin("qvledg");
    const int status = run(readOptions(argc, argv));
    MSG_UsageEnd();
    LOG_Flush(); // which a signal's end would not do
    OS_EndBySignal();
    return status;
}
