// qvledger-sum: sums the jobs, sheets and costs of print servers by owner, printer, month or any attribute.
#include <clocale>
#include <cstdio>
#include <vector>

#include "tool/options.h"
#include "tool/program.h"
#include "tool/run.h"
#include "tool/sum/sum_options.h"
#include "tool/sum/sum_writer.h"

using namespace qvledger;

static const char *const kUsage = "Command line usage: qvledger-sum [-h] [-V] [-b <key>[,<key>...]]\n"
                                  "   [-k <column>] [-n <number>] [-f <table|tsv|json|html>]\n"
                                  "   [-s <start date>] [-e <end date>] [-p <path>] [-O <path>]\n"
                                  "   serverName ...\n";

static int runSum(const Options &options) {
    const std::vector<const char *> servers = serversOf(options);
    const bool isValid = options.errflg == 0 && areDistinctNames(servers);
    if (options.helpflg != 0 || (options.verflg == 0 && !isValid)) {
        std::fputs(kUsage, stderr);
        return options.helpflg != 0 ? 0 : kStatusUsage;
    }
    SumOptions sumOptions;
    if (options.verflg == 0 && !readSumOptions(options, &sumOptions))
        return kStatusUsage;
    SumWriter writer(sumOptions, dateRange(options), servers);
    const int status = runWith(options, 1 + options.numMoreServers, writer, kStatusLostOutput);
    return status != 0 || options.verflg != 0 ? status : writer.status();
}

int main(int argc, char **argv) {
    // Sets the user's language for messages only: the sums do not depend on the locale.
    return runProgram("qvledger-sum", argc, argv, {LC_CTYPE, LC_MESSAGES}, [](int count, char **values) {
        replaceLongOptions(count, values);
        return runSum(readOptions(count, values, kSumLetters));
    });
}
