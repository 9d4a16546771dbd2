// qvledger: reports a print server's accounting logs.
#include <clocale>

#include "tool/options.h"
#include "tool/program.h"
#include "tool/run.h"

using namespace qvledger;

int main(int argc, char **argv) {
    return runProgram("qvledger", argc, argv, {LC_ALL},
                      [](int count, char **values) { return run(readOptions(count, values)); });
}
