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
    std::vector<std::string> entries; // texts of the tool's own log entries
    std::string log;                  // the whole log
};

constexpr int kNoNamespace = 125; // status of a run that may not create a mount namespace

// Settings in which a run differs from the usual one.
struct ToolRun {
    std::vector<std::pair<std::string, std::string>> environment = {}; // overrides the defaults
    int output = -1;              // descriptor for standard output; -1: captured in ToolResult::out
    int error = -1;               // descriptor for standard error; -1: captured in ToolResult::err
    std::vector<int> closed = {}; // standard streams that are closed at the start
    // A folder to mount over another one, in the run's own mount namespace.
    std::pair<std::string, std::string> mounted = {};
    // A path, and the calls on it that fail, in the syntax of strace(1) after "-e inject=".
    std::pair<std::string, std::string> failing = {};
    uid_t user = 0;                 // ids of the user and group to change to; 0: no change
    std::vector<gid_t> groups = {}; // the user's other groups
    std::string program = QVLEDGER_BINARY;
    bool traced = false; // this process traces the run, which stops at its start
};

// A print system with one server, alpha, whose registry gives its root as QV_ROOT.
class PrintSystem {
public:
    PrintSystem();

    std::filesystem::path operator/(const std::string &name) const { return folder_ / name; }
    std::filesystem::path log(const std::string &tail) const { return root.log("alpha", tail); }
    void save(const std::string &tail, const samples::Log &content) const { content.save(log(tail)); }

    // Every start() needs a finish().  SIGALRM ends a run after 20 seconds.
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

// Reads all bytes up to the end, or until a non-blocking descriptor has no more bytes.
std::string readAll(int fd);

// Sets a file's time of last change, in seconds since 1970.
void setChanged(const std::filesystem::path &path, time_t when);

const samples::Value kUnreadable{samples::Bytes("\0\0\0\x7f", 4)}; // a text without its characters

// The name of an attribute of the sample system, and its values.
using NamedTexts = std::pair<std::string, std::vector<std::string>>;
void addTexts(samples::Job &job, const std::vector<NamedTexts> &attributes);
samples::Job jobOf(const std::vector<NamedTexts> &attributes);
samples::Log logOf(const std::vector<samples::Job> &jobs, const samples::LogHeader &header = {});
// A log of one job, named "march".
samples::Log marchLog(const samples::LogHeader &header = {});
