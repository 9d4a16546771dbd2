// Runs the tool repeatedly, each time with the next allocation or system call failing, and checks how each
// run ends.
//
//     faults [STEP]      tries every STEP-th point (default 1)
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
#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"
#include "tests/trials/injector.h"
#include "tool/run.h"

using namespace qvledger;

namespace fs = std::filesystem;

constexpr char kTextsDay[] = "20010203"; // day of the oldest log, whose texts need conversion

namespace {

struct Scenario {
    const char *label;
    std::vector<std::string> arguments;
    std::string log; // value of QV_LOG
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
    std::string report; // contents of the report file or standard output
    std::multiset<std::string> messages, entries;
    FaultAccount account;
};

class Bench {
public:
    Bench();
    Run run(const Scenario &scenario, const std::string &order, rlim_t fileLimit = RLIM_INFINITY);
    void sweep(const Scenario &scenario, unsigned step);
    std::vector<Scenario> scenarios() const;

    unsigned allocations[2] = {}, calls = 0, faults = 0;

private:
    std::string complaint(const Run &untouched, const Run &run, bool mustReport) const;
    void judge(const Scenario &scenario, const Run &untouched, const Run &run, bool mustReport,
               const std::string &order);
    void sweepPoints(const Scenario &scenario, const Run &untouched, const Variant &variant, unsigned step);

    PrintSystem system_;
    fs::path store_ = system_ / "store", report_ = system_ / "report";
    std::vector<std::pair<fs::path, std::string>> logs_; // name of each log, and its lines in a report
    int account_ = -1;
};

} // namespace

Bench::Bench() {
    const std::vector<samples::Value> texts = {
        pack(samples::t61Text("M\xC8uller")), pack(samples::latin1Text("T\xFCr")),
        pack(samples::ucs2Text(samples::Bytes("\0J\0\xFC", 4))), pack(samples::codedText("\x80", 2252))};
    samples::Log log;
    log.job(samples::Job().attribute(samples::dotted("job-name"), samples::TEXT, texts));
    system_.save(kTextsDay, log);
    layDemo(system_.root, samples::callersAccount(), {.jobs = 2, .days = 3});
    fs::create_directory(store_);
    int ends[2];
    if (pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0 || dup2(ends[1], kAccountFd) != kAccountFd)
        throw std::runtime_error("no pipe for the injector's account");
    account_ = ends[0];
    for (const auto &entry : fs::directory_iterator(system_.root.logs()))
        fs::create_hard_link(entry.path(), store_ / entry.path().filename());
    for (const auto &entry : fs::directory_iterator(store_)) {
        const std::string date = entry.path().extension().string().substr(1);
        const Run alone = run({"alone", {"-agd", "-s", date, "-e", date}, "none"}, "");
        logs_.emplace_back(entry.path().filename(), alone.report);
    }
}

// Returns the day of the demo's second oldest log.
static std::string refusedDay(const fs::path &store) {
    std::set<std::string> dates;
    for (const auto &entry : fs::directory_iterator(store))
        dates.insert(entry.path().extension().string().substr(1));
    return *std::next(dates.upper_bound(kTextsDay));
}

std::vector<Scenario> Bench::scenarios() const {
    const std::string refused = refusedDay(store_);
    return {{"plain", {}, (system_ / "log").string()},
            {"documents", {"-a"}, "stderr"},
            {"deleting", {"-a", "-d", "-o", report_.string()}, "stderr"},
            {"denied", {"-d", "-s", refused, "-e", refused, "-o", report_.string()}, "stderr"}};
}

// Separates the level 5 log entries from the messages on standard error.  An entry is the line
// "TIME PROGRAM[PID]: LEVEL FILE:LINE: TEXT".
static void sortOut(const std::string &error, Run &run) {
    std::istringstream lines(error);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t level = line.find("]: 5 ");
        if (level != line.npos)
            run.entries.insert(line.substr(level));
        else
            run.messages.insert(line);
    }
}

Run Bench::run(const Scenario &scenario, const std::string &order, rlim_t fileLimit) {
    fs::remove_all(system_.root.logs()); // an earlier run may have deleted or renamed logs
    fs::create_directory(system_.root.logs());
    for (const auto &entry : fs::directory_iterator(store_))
        fs::create_hard_link(entry.path(), system_.root.logs() / entry.path().filename());
    fs::remove(report_);
    std::vector<std::string> arguments = scenario.arguments;
    arguments.emplace_back("alpha");
    const ToolRun tool = {.environment = {{kFaultVariable, order},
                                          {"QV_LOG", scenario.log},
                                          {"LC_ALL", "C.UTF-8"},
                                          {"ASAN_OPTIONS", "exitcode=98"},
                                          {"UBSAN_OPTIONS", "exitcode=98"}}};
    const rlimit limit = {fileLimit, RLIM_INFINITY}, none = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const pid_t pid = system_.start(arguments, tool);
    setrlimit(RLIMIT_FSIZE, &none);
    const ToolResult result = system_.finish(pid);
    Run run = {.status = result.status, .report = result.out, .messages = {}, .entries = {}, .account = {}};
    if (run.report.empty())
        run.report = readFile(report_);
    sortOut(result.err, run);
    if (read(account_, &run.account, sizeof run.account) != sizeof run.account)
        run.status += 10000; // the run ended abnormally
    return run;
}

// Are there lines that the untouched run, in which no point failed, did not write?
static bool saysMore(const std::multiset<std::string> &said, const std::multiset<std::string> &usual) {
    return !std::includes(usual.begin(), usual.end(), said.begin(), said.end());
}

// Returns what is wrong with a run, or an empty text if the run is good.
std::string Bench::complaint(const Run &untouched, const Run &run, bool mustReport) const {
    std::string wrong;
    if (run.status > 34 && run.status != 100)
        wrong += " ended badly;";
    if (run.account.live > untouched.account.live)
        wrong += " " + std::to_string(run.account.live) + " allocations leaked;";
    if (run.account.descriptors > untouched.account.descriptors)
        wrong += " a descriptor leaked;";
    for (const auto &[name, lines] : logs_)
        if (!fs::exists(system_.root.logs() / name) && run.report.find(lines) == run.report.npos)
            wrong += " " + name.string() + " deleted without its lines;";
    if (!mustReport || (run.status == untouched.status && run.report == untouched.report))
        return wrong;
    if (run.status != untouched.status && run.status != 0 && !saysMore(run.messages, untouched.messages))
        wrong += " no message;";
    const bool startFailed = run.status == kStatusBadStart || run.status == kStatusNoMemory;
    const bool messageAlone = startFailed && run.report.empty() && run.entries.empty();
    const bool notDated = run.account.last == std::string("stat"); // an undated log is skipped silently
    if (!messageAlone && !notDated && !saysMore(run.entries, untouched.entries))
        wrong += " no entry in the log;";
    return wrong;
}

void Bench::judge(const Scenario &scenario, const Run &untouched, const Run &run, bool mustReport,
                  const std::string &order) {
    const std::string wrong = complaint(untouched, run, mustReport);
    if (wrong.empty())
        return;
    ++faults;
    std::printf("FAULT in %s at %s (%s), status %d:%s\n", scenario.label, order.c_str(), run.account.last,
                run.status, wrong.c_str());
    for (const auto *lines : {&run.messages, &run.entries})
        for (const std::string &line : *lines)
            std::printf("    %s\n", line.c_str());
}

void Bench::sweepPoints(const Scenario &scenario, const Run &untouched, const Variant &variant,
                        unsigned step) {
    for (unsigned n = 1;; n += step) {
        char order[64];
        std::snprintf(order, sizeof order, "%c:%u:%d:%d", variant.family, n, variant.lasts, variant.error);
        const Run tried = run(scenario, order);
        const bool mustReport = scenario.log == "stderr" && !tried.account.mute;
        judge(scenario, untouched, tried, mustReport, order);
        if (variant.error == kShortRead && tried.report != untouched.report && ++faults != 0)
            std::printf("FAULT in %s at %s: short reads change the report\n", scenario.label, order);
        if (tried.account.fired == 0 && tried.status < 1000)
            return;
        ++(variant.family == 'a' ? allocations[variant.lasts] : calls);
    }
}

void Bench::sweep(const Scenario &scenario, unsigned step) {
    const Run untouched = run(scenario, "");
    if (untouched.status > kStatusNoRoot)
        throw std::runtime_error("the tool does not run");
    judge(scenario, untouched, untouched, false, "no point");
    for (const Variant &variant : kVariants)
        sweepPoints(scenario, untouched, variant, step);
    // The injector cannot fail the C library's own writes, so a file size limit imitates a full disk.
    for (std::size_t limit = 0; limit < untouched.report.size(); limit += 20 * step, ++calls)
        judge(scenario, untouched, run(scenario, "", limit), false, "file limit " + std::to_string(limit));
}

static int sweepAll(unsigned step) {
    Bench bench;
    for (const Scenario &scenario : bench.scenarios())
        bench.sweep(scenario, step);
    std::printf("allocations: %u points once, %u for good; calls: %u points; %u faults\n",
                bench.allocations[0], bench.allocations[1], bench.calls, bench.faults);
    return bench.faults == 0 ? 0 : 1;
}

int main(int argc, char **argv) {
    setenv("TZ", "UTC", 1);
    std::signal(SIGXFSZ, SIG_IGN);
    const int step = argc > 1 ? std::atoi(argv[1]) : 1;
    try {
        return sweepAll(static_cast<unsigned>(std::max(step, 1)));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "faults: %s\n", error.what());
        return 2;
    }
}
