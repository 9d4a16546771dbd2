#include "tests/support/run_tool.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "samples/sample_oids.h"

namespace fs = std::filesystem;

constexpr unsigned kLongestRun = 20; // seconds

PrintSystem::PrintSystem() : root(folder_ / "root") {
    fs::permissions(folder_.path(), fs::perms(0755)); // other users run the tool in this folder
    root.writeRegistry("alpha");
    samples::writeFile(folder_ / "log", "");
    fs::permissions(folder_ / "log", fs::perms(0666));
}

// Runs between fork() and execve(), so it makes only system calls.
[[noreturn]] static void becomeTool(const ToolRun &run, const char *program, int output, int error,
                                    char **arguments, char **environment) {
    dup2(output, STDOUT_FILENO);
    dup2(error, STDERR_FILENO);
    for (const int fd : run.closed)
        close(fd);
    alarm(kLongestRun);
    if (!run.mounted.first.empty() &&
        (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
         mount(run.mounted.first.c_str(), run.mounted.second.c_str(), nullptr, MS_BIND, nullptr) != 0))
        _exit(kNoNamespace);
    if (run.user != 0 && (setgroups(run.groups.size(), run.groups.data()) != 0 || setgid(run.user) != 0 ||
                          setuid(run.user) != 0))
        _exit(126);
    if (run.traced && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(125);
    execve(program, arguments, environment);
    _exit(127);
}

static int openNew(const fs::path &path) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(), path);
    return fd;
}

static std::vector<char *> pointersTo(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t PrintSystem::start(const std::vector<std::string> &furtherArguments, const ToolRun &run) {
    const char *const runner = std::getenv("QVLEDGER_RUNNER");
    std::vector<std::string> arguments = {"qvledger"};
    std::map<std::string, std::string> variables = {
        {"QV_REGISTRY", root.registry()}, {"QV_LOG", folder_ / "log"}, {"TZ", "UTC"}, {"LC_ALL", "C"}};
    for (const auto &[name, value] : run.environment)
        variables[name] = value;
    std::vector<std::string> environment;
    for (const auto &[name, value] : variables)
        environment.push_back(name + '=' + value);
    // A runner gets the program's path and arguments, and this process's QVLEDGER_ variables.
    if (runner != nullptr) {
        arguments = {runner, run.program};
        for (char **kept = environ; *kept != nullptr; ++kept)
            if (std::string_view(*kept).starts_with("QVLEDGER_"))
                environment.emplace_back(*kept);
    }
    if (!run.failing.first.empty()) {
        if (runner != nullptr)
            throw std::logic_error("the runner cannot make calls fail");
        arguments = {"strace",   "-qq",
                     "-o",       "/dev/null",
                     "-P",       run.failing.first,
                     "-e",       "inject=" + run.failing.second,
                     run.program};
        environment.emplace_back("ASAN_OPTIONS=detect_leaks=0"); // LeakSanitizer fails in a traced program
    }
    const char *const started = !run.failing.first.empty() ? "/usr/bin/strace"
                                : runner != nullptr        ? runner
                                                           : run.program.c_str();
    arguments.insert(arguments.end(), furtherArguments.begin(), furtherArguments.end());
    fs::resize_file(folder_ / "log", 0);
    const int captured = openNew(folder_ / "out");
    const int error = openNew(folder_ / "err");
    std::vector<char *> argumentList = pointersTo(arguments);
    std::vector<char *> environmentList = pointersTo(environment);
    const pid_t pid = fork();
    if (pid == 0)
        becomeTool(run, started, run.output >= 0 ? run.output : captured, run.error >= 0 ? run.error : error,
                   argumentList.data(), environmentList.data());
    close(captured);
    close(error);
    return pid;
}

// Returns TEXT of each level 5 entry "TIME PROGRAM[PID]: LEVEL tool/FILE:LINE: TEXT".
static std::vector<std::string> entriesOfTool(const std::string &log) {
    std::vector<std::string> entries;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t place = line.find(" 5 tool/"); place != std::string::npos)
            entries.push_back(line.substr(line.find(": ", place) + 2));
    return entries;
}

ToolResult PrintSystem::finish(pid_t pid) {
    int status = 0;
    if (waitpid(pid, &status, 0) != pid)
        throw std::system_error(errno, std::generic_category(), "waitpid");
    ToolResult result{.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status),
                      .out = readFile(folder_ / "out"),
                      .err = readFile(folder_ / "err"),
                      .entries = {},
                      .log = readFile(folder_ / "log")};
    result.entries = entriesOfTool(result.log);
    return result;
}

void ask(pid_t run, int signal) {
    kill(run, signal);
    if (std::getenv("QVLEDGER_RUNNER") != nullptr)
        usleep(1'000'000);
}

bool wasKept(const ToolResult &result, const std::string &why) {
    return result.log.find(why) != std::string::npos &&
           result.log.find("is not deleted: ") != std::string::npos;
}

std::string readAll(int fd) {
    std::string all;
    char bytes[4096];
    for (ssize_t got; (got = read(fd, bytes, sizeof bytes)) > 0;)
        all.append(bytes, static_cast<std::size_t>(got));
    return all;
}

void setChanged(const fs::path &path, time_t when) {
    const timespec times[2] = {{when, 0}, {when, 0}};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        throw std::system_error(errno, std::generic_category(), path);
}

void addTexts(samples::Job &job, const std::vector<NamedTexts> &attributes) {
    for (const auto &[name, texts] : attributes) {
        std::vector<samples::Value> values;
        for (const std::string &text : texts)
            values.emplace_back(samples::packString(text));
        job.attribute(samples::dotted(name), samples::STRING, values);
    }
}

samples::Job jobOf(const std::vector<NamedTexts> &attributes) {
    samples::Job job;
    addTexts(job, attributes);
    return job;
}

samples::Log logOf(const std::vector<samples::Job> &jobs, const samples::LogHeader &header) {
    samples::Log log(header);
    for (const samples::Job &job : jobs)
        log.job(job);
    return log;
}

samples::Log marchLog(const samples::LogHeader &header) {
    return logOf({jobOf({{"job-name", {"march"}}})}, header);
}
