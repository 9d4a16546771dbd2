// Runs the tool in a temporary folder.  The input is the arguments, separated by NULs.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include "samples/log_writer.h"
#include "tests/fuzz/sandbox.h"
#include "tool/options.h"
#include "tool/run.h"

using namespace qvledger;

static void enter(const Sandbox &sandbox) {
    if (chdir(sandbox.root().path().c_str()) != 0 || std::freopen("/dev/null", "w", stdout) == nullptr)
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    static const bool entered = (enter(sandbox), true);
    static_cast<void>(entered);
    const std::string text(reinterpret_cast<const char *>(bytes), size);
    if (text.find('/') != std::string::npos)
        return 0; // the run could use paths outside the folder
    std::vector<std::string> words = {"qvledger"};
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\0', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    samples::Log().save(sandbox.root().log("alpha", "20010203"));
    optind = 0; // restarts getopt
    Options options = readOptions(static_cast<int>(words.size()), argv.data());
    if (options.ofile != nullptr)
        options.ofile = "report";
    run(options);
    return 0;
}
