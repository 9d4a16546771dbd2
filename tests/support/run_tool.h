// Runs a built program on a temporary print system and returns its status, output and log.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "samples/log_writer.h"
#include "samples/sample_root.h"
#include "tests/support/temp_dir.h"

struct ToolResult {
    int status = -1; // exit status, or 1000 plus the signal that ended the run
    std::string out, err;
    std::vector<std::string> entries; // texts of the level 5 entries of tool/
    std::string log;                  // the whole log
};

constexpr int kNoNamespace = 125; // status of a run whose mount or tracing failed

// Settings of a run.
struct ToolRun {
    std::vector<std::pair<std::string, std::string>> environment = {}; // override the variables of start()
    int output = -1;              // descriptor for standard output; -1: captured in ToolResult::out
    int error = -1;               // descriptor for standard error; -1: captured in ToolResult::err
    std::vector<int> closed = {}; // standard streams that are closed at the start
    // A folder, and the folder over which the run mounts it in its own mount namespace.
    std::pair<std::string, std::string> mounted = {};
    // A path, and the calls on it that fail, in the syntax of strace(1) after "-e inject=".
    std::pair<std::string, std::string> failing = {};
    uid_t user = 0;                 // id of the user and of the group to change to; 0: no change
    std::vector<gid_t> groups = {}; // the user's other groups, if user is not 0
    std::string program = QVLEDGER_BINARY;
    bool traced = false; // this process traces the run, which stops at its start
};

// A print system with one server, alpha.  The registry sets QV_ROOT to the system's root.
class PrintSystem {
public:
    PrintSystem();

    std::filesystem::path operator/(const std::string &name) const { return folder_ / name; }
    std::filesystem::path log(const std::string &tail) const { return root.log("alpha", tail); }
    void save(const std::string &tail, const samples::Log &content) const { content.save(log(tail)); }

    // After start(), call finish() or waitpid().  SIGALRM ends a run after 20 seconds.
    pid_t start(const std::vector<std::string> &arguments, const ToolRun &run = {});
    ToolResult finish(pid_t pid);
    ToolResult run(const std::vector<std::string> &arguments, const ToolRun &toolRun = {}) {
        return finish(start(arguments, toolRun));
    }

private:
    TempDir folder_;

public:
    const samples::SampleRoot root;
};

// Sends a run a signal, and gives a runner time to forward it.
void ask(pid_t run, int signal);

// Does the program's log say that a log was kept for this reason?
bool wasKept(const ToolResult &result, const std::string &why);

// Reads all bytes up to the end, or until a non-blocking descriptor has no more bytes.
std::string readAll(int fd);

// Sets a file's time of last change, in seconds since 1970.
void setChanged(const std::filesystem::path &path, time_t when);

const samples::Value kUnreadable{samples::Bytes("\0\0\0\x7f", 4)}; // a text whose characters are missing

// The name of an attribute of the sample system, and its values.
using NamedTexts = std::pair<std::string, std::vector<std::string>>;
void addTexts(samples::Job &job, const std::vector<NamedTexts> &attributes);
samples::Job jobOf(const std::vector<NamedTexts> &attributes);
samples::Log logOf(const std::vector<samples::Job> &jobs, const samples::LogHeader &header = {});
// Returns a log of one job, whose name is "march".
samples::Log marchLog(const samples::LogHeader &header = {});
