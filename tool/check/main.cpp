// qvledger-check: reports which accounting logs are whole and which admit the user, and saves the intact
// records of damaged logs.
#include <clocale>

#include "tool/check/check_run.h"
#include "tool/options.h"
#include "tool/program.h"

using namespace qvledger;

int main(int argc, char **argv) {
    // Sets the user's language for messages only: the tables do not depend on the locale.
    return runProgram("qvledger-check", argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        replaceLongOptions(count, values);
        return runCheck(readOptions(count, values, kCheckLetters));
    });
}
