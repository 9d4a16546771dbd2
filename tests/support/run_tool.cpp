#include "tests/support/run_tool.h"

#include <cerrno>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "samples/oid_table.h"

namespace fs = std::filesystem;

constexpr unsigned kLongestRun = 20; // seconds

PrintSystem::PrintSystem() : root(folder / "root") {
    fs::permissions(folder.path(), fs::perms(0755)); // other users run the tool in it
    root.writeRegistry("alpha");
    samples::writeFile(folder / "log", "");
    fs::permissions(folder / "log", fs::perms(0666));
}

// Only what the kernel does is called from here on, up to the new program.
[[noreturn]] static void becomeTool(const ToolRun &in_run, int in_output, int in_error, char **inp_arguments,
                                    char **inp_environment) {
    dup2(in_output, STDOUT_FILENO);
    dup2(in_error, STDERR_FILENO);
    for (const int fd : in_run.closed)
        close(fd);
    alarm(kLongestRun);
    if (!in_run.mounted.first.empty() &&
        (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
         mount(in_run.mounted.first.c_str(), in_run.mounted.second.c_str(), nullptr, MS_BIND, nullptr) != 0))
        _exit(kNoNamespace);
    if (in_run.user != 0 &&
        (setgroups(0, nullptr) != 0 || setgid(in_run.user) != 0 || setuid(in_run.user) != 0))
        _exit(126);
    if (in_run.traced && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(125);
    execve(in_run.program.c_str(), inp_arguments, inp_environment);
    _exit(127);
}

static int openNew(const fs::path &in_path) {
    const int fd = open(in_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(), in_path);
    return fd;
}

static std::vector<char *> pointersTo(std::vector<std::string> &in_texts) {
    std::vector<char *> pointers;
    for (std::string &text : in_texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t PrintSystem::start(const std::vector<std::string> &in_arguments, const ToolRun &in_run) {
    std::vector<std::string> arguments = {"qvledger"};
    arguments.insert(arguments.end(), in_arguments.begin(), in_arguments.end());
    std::vector<std::string> environment;
    for (const auto &[name, value] : in_run.environment)
        environment.push_back(name + '=' + value);
    // Of two assignments the first one counts.
    for (const std::string &assignment :
         {"QV_REGISTRY=" + root.registry().string(), "QV_LOG=" + (folder / "log").string(),
          std::string("TZ=UTC"), std::string("LC_ALL=C")})
        environment.push_back(assignment);
    fs::resize_file(folder / "log", 0);
    const int captured = openNew(folder / "out");
    const int error = openNew(folder / "err");
    std::vector<char *> argumentList = pointersTo(arguments);
    std::vector<char *> environmentList = pointersTo(environment);
    const pid_t pid = fork();
    if (pid == 0)
        becomeTool(in_run, in_run.output >= 0 ? in_run.output : captured,
                   in_run.error >= 0 ? in_run.error : error, argumentList.data(), environmentList.data());
    close(captured);
    close(error);
    return pid;
}

// "TIME PROGRAM[PID]: LEVEL tool/FILE:LINE: TEXT"
static std::vector<std::string> entriesOfTool(const std::string &in_log) {
    std::vector<std::string> entries;
    std::istringstream lines(in_log);
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t place = line.find(" 5 tool/"); place != std::string::npos)
            entries.push_back(line.substr(line.find(": ", place) + 2));
    return entries;
}

ToolResult PrintSystem::finish(pid_t in_pid) {
    int status = 0;
    if (waitpid(in_pid, &status, 0) != in_pid)
        throw std::system_error(errno, std::generic_category(), "waitpid");
    ToolResult result{.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status),
                      .out = readFile(folder / "out"),
                      .err = readFile(folder / "err"),
                      .entries = {},
                      .log = readFile(folder / "log")};
    result.entries = entriesOfTool(result.log);
    return result;
}

void setChanged(const fs::path &in_path, time_t in_when) {
    const timespec times[2] = {{in_when, 0}, {in_when, 0}};
    if (utimensat(AT_FDCWD, in_path.c_str(), times, 0) != 0)
        throw std::system_error(errno, std::generic_category(), in_path);
}

void addTexts(samples::Job &inoutp_job, const std::vector<NamedTexts> &in_attributes) {
    for (const auto &[name, texts] : in_attributes) {
        std::vector<samples::Value> values;
        for (const std::string &text : texts)
            values.emplace_back(samples::packString(text));
        inoutp_job.attribute(samples::dotted(name), samples::STRING, values);
    }
}

samples::Job jobOf(const std::vector<NamedTexts> &in_attributes) {
    samples::Job job;
    addTexts(job, in_attributes);
    return job;
}

samples::Log logOf(const std::vector<samples::Job> &in_jobs, const samples::LogHeader &in_header) {
    samples::Log log(in_header);
    for (const samples::Job &job : in_jobs)
        log.job(job);
    return log;
}
