// Runs the built qvledger on a root of its own and gives back all that a user and an operator see of it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "samples/log_writer.h"
#include "samples/sample_root.h"
#include "tests/support/temp_dir.h"

struct ToolResult {
    int status = -1; // of the exit; 1000 and more: the signal that ended the run
    std::string out, err;
    std::vector<std::string> entries; // the tool's own log entries, without what precedes their texts
    std::string log;                  // the whole log
};

constexpr int kNoNamespace = 125; // the status of a run that may not have a mount namespace of its own

// How a run differs from the usual one.
struct ToolRun {
    std::vector<std::pair<std::string, std::string>> environment = {}; // wins over the defaults
    int output = -1;              // a descriptor for the standard output; -1: it is collected
    int error = -1;               // the same for the standard error stream
    std::vector<int> closed = {}; // standard streams that are closed at the start
    // A folder in the place of another one, in a mount namespace of the run's own.
    std::pair<std::string, std::string> mounted = {};
    // A path, and which calls on it fail, as strace(1) says after "-e inject=".
    std::pair<std::string, std::string> failing = {};
    uid_t user = 0;                 // a user to change to, with the group of the same number; 0: none
    std::vector<gid_t> groups = {}; // the user's other groups
    std::string program = QVLEDGER_BINARY;
    bool traced = false; // by this process; it stops at its start
};

// A print system with one server, alpha, whose registry gives its root as QV_ROOT.
class PrintSystem {
public:
    PrintSystem();

    std::filesystem::path operator/(const std::string &name) const { return folder_ / name; }
    std::filesystem::path log(const std::string &tail) const { return root.log("alpha", tail); }
    void save(const std::string &tail, const samples::Log &content) const { content.save(log(tail)); }

    // What is started must be finished.  A run that takes longer than 20 seconds ends by SIGALRM.
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

// What comes until nobody can write there any more, or nothing is waiting.
std::string readAll(int fd);

// Sets a file's last change: seconds since 1970.
void setChanged(const std::filesystem::path &path, time_t when);

const samples::Value kUnreadable{samples::Bytes("\0\0\0\x7f", 4)}; // a text without its characters

// An attribute of the sample system with texts as its values.
using NamedTexts = std::pair<std::string, std::vector<std::string>>;
void addTexts(samples::Job &job, const std::vector<NamedTexts> &attributes);
samples::Job jobOf(const std::vector<NamedTexts> &attributes);
samples::Log logOf(const std::vector<samples::Job> &jobs, const samples::LogHeader &header = {});
// One with a single job, named "march".
samples::Log marchLog(const samples::LogHeader &header = {});
