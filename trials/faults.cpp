// Runs the tool again and again with one allocation or one call of the operating system failing, a later one
// each time, and judges how every run ends.
//
//     faults [STEP]      tries each STEP-th point (1)
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "samples/demo_root.h"
#include "samples/oid_table.h"
#include "tests/support/run_tool.h"
#include "tool/run.h"
#include "trials/injector.h"

namespace fs = std::filesystem;

constexpr char kTextsDay[] = "20010203"; // of a log of texts to be converted, the oldest one

namespace {

struct Scenario {
    const char *label;
    std::vector<std::string> arguments;
    std::string log; // QV_LOG
};

struct Variant {
    char family;
    int lasts, error;
};

constexpr Variant kVariants[] = {{'a', 0, ENOMEM}, {'a', 1, ENOMEM},     {'c', 0, EIO},
                                 {'c', 1, EIO},    {'c', 0, EINTR},      {'c', 0, ENOENT},
                                 {'c', 0, EMFILE}, {'c', 0, kShortRead}, {'c', 1, kShortRead}};

struct Run {
    int status;
    std::string report; // of the file or the standard output
    std::multiset<std::string> messages, entries;
    FaultAccount account;
};

class Bench {
public:
    Bench();
    Run run(const Scenario &in_scenario, const std::string &in_order, rlim_t in_fileLimit = RLIM_INFINITY);
    void sweep(const Scenario &in_scenario, unsigned in_step);
    std::vector<Scenario> scenarios() const;

    unsigned allocations[2] = {}, calls = 0, faults = 0;

private:
    std::string complaint(const Run &in_untouched, const Run &in_run, bool in_told) const;
    void judge(const Scenario &in_scenario, const Run &in_untouched, const Run &in_run, bool in_told,
               const std::string &in_order);
    void sweepPoints(const Scenario &in_scenario, const Run &in_untouched, const Variant &in_variant,
                     unsigned in_step);

    PrintSystem system;
    fs::path store = system / "store", report = system / "report";
    std::vector<std::pair<fs::path, std::string>> logs; // by name, with the lines that they make
    int account = -1;
};

} // namespace

Bench::Bench() {
    const std::vector<samples::Value> texts = {
        pack(samples::t61Text("M\xC8uller")), pack(samples::latin1Text("T\xFCr")),
        pack(samples::ucs2Text(samples::Bytes("\0J\0\xFC", 4))), pack(samples::codedText("\x80", 2252))};
    samples::Log log;
    log.job(samples::Job().attribute(samples::dotted("job-name"), samples::TEXT, texts));
    system.save(kTextsDay, log);
    layDemo(system.root, samples::callersAccount(), {.jobs = 2, .days = 3});
    fs::create_directory(store);
    int ends[2];
    if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0 || dup2(ends[1], kAccountFd) != kAccountFd)
        throw std::runtime_error("no pipe for the injector's account");
    account = ends[0];
    for (const auto &entry : fs::directory_iterator(system.root.logs()))
        fs::create_hard_link(entry.path(), store / entry.path().filename());
    for (const auto &entry : fs::directory_iterator(store)) {
        const std::string date = entry.path().extension().string().substr(1);
        const Run alone = run({"alone", {"-agd", "-s", date, "-e", date}, "none"}, "");
        logs.emplace_back(entry.path().filename(), alone.report);
    }
}

// Of the demonstration's logs the second oldest.
static std::string refusedDay(const fs::path &in_store) {
    std::set<std::string> dates;
    for (const auto &entry : fs::directory_iterator(in_store))
        dates.insert(entry.path().extension().string().substr(1));
    return *std::next(dates.upper_bound(kTextsDay));
}

std::vector<Scenario> Bench::scenarios() const {
    const std::string refused = refusedDay(store);
    return {{"plain", {}, (system / "log").string()},
            {"documents", {"-a"}, "stderr"},
            {"deleting", {"-a", "-d", "-o", report.string()}, "stderr"},
            {"denied", {"-d", "-s", refused, "-e", refused, "-o", report.string()}, "stderr"}};
}

// "TIME PROGRAM[PID]: LEVEL FILE:LINE: TEXT" is an entry of the log, all else is for the user.
static void sortOut(const std::string &in_error, Run &outp_run) {
    std::istringstream lines(in_error);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t level = line.find("]: 5 ");
        if (level != line.npos)
            outp_run.entries.insert(line.substr(level));
        else
            outp_run.messages.insert(line);
    }
}

Run Bench::run(const Scenario &in_scenario, const std::string &in_order, rlim_t in_fileLimit) {
    fs::remove_all(system.root.logs()); // what an earlier run deleted, or left aside
    fs::create_directory(system.root.logs());
    for (const auto &entry : fs::directory_iterator(store))
        fs::create_hard_link(entry.path(), system.root.logs() / entry.path().filename());
    fs::remove(report);
    std::vector<std::string> arguments = in_scenario.arguments;
    arguments.emplace_back("alpha");
    const ToolRun tool = {.environment = {{kFaultVariable, in_order},
                                          {"QV_LOG", in_scenario.log},
                                          {"LC_ALL", "C.UTF-8"},
                                          {"ASAN_OPTIONS", "exitcode=98"},
                                          {"UBSAN_OPTIONS", "exitcode=98"}}};
    const rlimit limit = {in_fileLimit, RLIM_INFINITY}, none = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const pid_t pid = system.start(arguments, tool);
    setrlimit(RLIMIT_FSIZE, &none);
    const ToolResult result = system.finish(pid);
    Run run = {.status = result.status, .report = result.out, .messages = {}, .entries = {}, .account = {}};
    if (run.report.empty())
        run.report = readFile(report);
    sortOut(result.err, run);
    if (read(account, &run.account, sizeof run.account) != sizeof run.account)
        run.status += 10000; // it did not come to its end
    return run;
}

// Is there something that the untouched run did not say?
static bool saysMore(const std::multiset<std::string> &in_said, const std::multiset<std::string> &in_usual) {
    return !std::includes(in_usual.begin(), in_usual.end(), in_said.begin(), in_said.end());
}

// What is wrong with a run; nothing if all is well.
std::string Bench::complaint(const Run &in_untouched, const Run &in_run, bool in_told) const {
    std::string wrong;
    if (in_run.status > 34 && in_run.status != 100)
        wrong += " ended badly;";
    if (in_run.account.live > in_untouched.account.live)
        wrong += " " + std::to_string(in_run.account.live) + " allocations leaked;";
    if (in_run.account.descriptors > in_untouched.account.descriptors)
        wrong += " a descriptor leaked;";
    for (const auto &[name, lines] : logs)
        if (!fs::exists(system.root.logs() / name) && in_run.report.find(lines) == in_run.report.npos)
            wrong += " " + name.string() + " deleted without its lines;";
    if (!in_told || (in_run.status == in_untouched.status && in_run.report == in_untouched.report))
        return wrong;
    if (in_run.status != in_untouched.status && in_run.status != 0 &&
        !saysMore(in_run.messages, in_untouched.messages))
        wrong += " no message;";
    const bool startFailed = in_run.status == kStatusBadStart || in_run.status == kStatusNoMemory;
    const bool messageAlone = startFailed && in_run.report.empty() && in_run.entries.empty();
    const bool notDated = in_run.account.last == std::string("stat"); // the current log is left out, unsaid
    if (!messageAlone && !notDated && !saysMore(in_run.entries, in_untouched.entries))
        wrong += " no entry in the log;";
    return wrong;
}

void Bench::judge(const Scenario &in_scenario, const Run &in_untouched, const Run &in_run, bool in_told,
                  const std::string &in_order) {
    const std::string wrong = complaint(in_untouched, in_run, in_told);
    if (wrong.empty())
        return;
    ++faults;
    std::printf("FAULT in %s at %s (%s), status %d:%s\n", in_scenario.label, in_order.c_str(),
                in_run.account.last, in_run.status, wrong.c_str());
    for (const auto *lines : {&in_run.messages, &in_run.entries})
        for (const std::string &line : *lines)
            std::printf("    %s\n", line.c_str());
}

void Bench::sweepPoints(const Scenario &in_scenario, const Run &in_untouched, const Variant &in_variant,
                        unsigned in_step) {
    for (unsigned n = 1;; n += in_step) {
        char order[64];
        std::snprintf(order, sizeof order, "%c:%u:%d:%d", in_variant.family, n, in_variant.lasts,
                      in_variant.error);
        const Run tried = run(in_scenario, order);
        const bool told = in_scenario.log == "stderr" && !tried.account.mute;
        judge(in_scenario, in_untouched, tried, told, order);
        if (in_variant.error == kShortRead && tried.report != in_untouched.report && ++faults != 0)
            std::printf("FAULT in %s at %s: short reads change the report\n", in_scenario.label, order);
        if (tried.account.fired == 0 && tried.status < 1000)
            return;
        ++(in_variant.family == 'a' ? allocations[in_variant.lasts] : calls);
    }
}

void Bench::sweep(const Scenario &in_scenario, unsigned in_step) {
    const Run untouched = run(in_scenario, "");
    if (untouched.status > kStatusNoRoot)
        throw std::runtime_error("the tool does not run");
    judge(in_scenario, untouched, untouched, false, "no point");
    for (const Variant &variant : kVariants)
        sweepPoints(in_scenario, untouched, variant, in_step);
    // The C library's own writes are out of the injector's reach: a full disk is a limit on files.
    for (std::size_t limit = 0; limit < untouched.report.size(); limit += 20 * in_step, ++calls)
        judge(in_scenario, untouched, run(in_scenario, "", limit), false,
              "file limit " + std::to_string(limit));
}

static int sweepAll(unsigned in_step) {
    Bench bench;
    for (const Scenario &scenario : bench.scenarios())
        bench.sweep(scenario, in_step);
    std::printf("allocations: %u points once, %u for good; calls: %u points; %u faults\n",
                bench.allocations[0], bench.allocations[1], bench.calls, bench.faults);
    return bench.faults == 0 ? 0 : 1;
}

int main(int argc, char **argv) {
    setenv("TZ", "UTC", 1); // of the tool's runs
    std::signal(SIGXFSZ, SIG_IGN);
    const int step = argc > 1 ? std::atoi(argv[1]) : 1;
    try {
        return sweepAll(static_cast<unsigned>(std::max(step, 1)));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "faults: %s\n", error.what());
        return 2;
    }
}
