// qvledger-check: tells which accounting logs are whole, which the caller may read, and saves what damage
// left.
#include <clocale>

#include "tool/check/check_run.h"
#include "tool/options.h"
#include "tool/program.h"

using namespace qvledger;

int main(int argc, char **argv) {
    // Messages in the user's language; what the tables hold is the same for everyone.
    return runProgram("qvledger-check", argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        return runCheck(readOptions(count, values, kCheckLetters));
    });
}
