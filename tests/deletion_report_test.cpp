// The report must be safe before a log is deleted: written, synced or read, and in place.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <tuple>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "service/log/log.h"
#include "service/log/log_internal.h"
#include "tests/support/run_tool.h"
#include "tests/support/scripted_os.h"
#include "tool/run.h"

using namespace qvledger;

using namespace samples;
namespace fs = std::filesystem;

static const char *const kTail = "19990301";

// The report cannot be written: the run keeps both logs and does not read the second one.
static void expectKeptUnwritten(const std::vector<std::string> &arguments, const ToolRun &run,
                                const std::string &err) {
    SCOPED_TRACE(err);
    PrintSystem system;
    system.save("19990301", logOf({jobOf({{"job-name", {std::string(600'000, 'x')}}})}));
    system.save("19990302", marchLog());
    const ToolResult result = system.run(arguments, run);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, err);
    EXPECT_TRUE(fs::exists(system.log("19990301")) && fs::exists(system.log("19990302")));
    EXPECT_NE(result.log.find("the report could not be written: "), std::string::npos);
    EXPECT_TRUE(wasKept(result, "the log for the date 19990301")) << result.log;
    EXPECT_FALSE(wasKept(result, "the log for the date 19990302")) << result.log;
}

TEST(Deletion, APipeWithoutAReaderKeepsTheLog) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const Descriptor pipe(ends[1]);
    expectKeptUnwritten({"-d", "alpha"}, {.output = pipe.get()}, "");
}

TEST(Deletion, AClosedOutputKeepsTheLog) {
    expectKeptUnwritten(
        {"-d", "alpha"}, {.closed = {1}},
        "qvledger: the report could not be written to standard output: Bad file descriptor.\n");
    for (const char *name : {"/dev/stdout", "/dev/fd/1"}) {
        PrintSystem system;
        system.save("19990301", marchLog());
        EXPECT_EQ(system.run({"-d", "-o", name, "alpha"}, {.closed = {1}}).status, 30) << name;
        EXPECT_TRUE(fs::exists(system.log("19990301"))) << name;
    }
}

TEST(Deletion, AFullDeviceKeepsTheLog) {
    const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    expectKeptUnwritten(
        {"-d", "alpha"}, {.output = full.get()},
        "qvledger: the report could not be written to standard output: No space left on device.\n");
    expectKeptUnwritten({"-d", "-o", "/dev/full", "alpha"}, {},
                        "qvledger: the report /dev/full could not be written: No space left on device.\n");

    PrintSystem system;
    system.save("19990301", marchLog());
    const ToolResult result = system.run({"-d", "-o", "/dev/null", "alpha"});
    EXPECT_EQ(result.err, "");
    EXPECT_FALSE(fs::exists(system.log("19990301"))) << "this device needs no sync";
}

// Lines in a pipe or local socket are safe once they are read; lines sent over a network are never safe.
TEST(Deletion, ALogIsKeptUntilTheReaderHasReadItsLines) {
    enum Act { kReads, kLeaves, kWaits };
    const auto expectDeleted = [](bool deleted, const char *label, int reader, int writer, Act act,
                                  const char *why) {
        SCOPED_TRACE(label);
        PrintSystem system;
        system.save(kTail, marchLog());
        const pid_t run = system.start({"-d", "alpha"}, {.output = writer});
        close(writer);
        pollfd lines = {.fd = reader, .events = POLLIN, .revents = 0};
        EXPECT_EQ(poll(&lines, 1, 10'000), 1);
        usleep(50'000);
        EXPECT_TRUE(fs::exists(system.log(kTail)));
        char drained[64];
        while (act == kReads && read(reader, drained, sizeof drained) > 0)
            continue;
        if (act == kWaits)
            kill(run, SIGTERM);
        if (act == kLeaves)
            close(reader);
        const ToolResult result = system.finish(run);
        EXPECT_EQ(result.status, act == kWaits ? 1000 + SIGTERM : 0);
        EXPECT_EQ(fs::exists(system.log(kTail)), !deleted);
        EXPECT_EQ(wasKept(result, why), !deleted) << result.log;
        if (act != kLeaves)
            close(reader);
    };
    const std::tuple<const char *, bool, Act, const char *> cases[] = {
        {"pipe read", true, kReads, ""},
        {"reader closes the pipe", true, kLeaves, "the reader of its report has not read all of it"},
        {"signal", true, kWaits, "the run was asked to end"},
        {"local socket read", false, kReads, ""},
        {"reader closes the socket", false, kLeaves, "the reader of its report has not read all of it"}};
    for (const auto &[label, isPipe, act, why] : cases) {
        int ends[2];
        ASSERT_EQ(isPipe ? pipe2(ends, O_CLOEXEC) : socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends),
                  0);
        expectDeleted(act == kReads, label, ends[0], ends[1], act, why);
    }

    const Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *const any = reinterpret_cast<sockaddr *>(&address);
    socklen_t size = sizeof address;
    const int writer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener.get(), any, size) + listen(listener.get(), 1), 0);
    ASSERT_EQ(getsockname(listener.get(), any, &size) + connect(writer, any, size), 0);
    expectDeleted(false, "over a network", accept(listener.get(), nullptr, nullptr), writer, kReads,
                  "over a network");
}

// Runs the tool with -d and -o in this process, where calls can be scripted.  Returns the exit status.
static int deleteInProcess(const PrintSystem &system, const std::string &report) {
    const std::string logs = system.root.logs(), oids = system.root.oids();
    setenv("QV_REGISTRY", system.root.registry().c_str(), 1);
    const int status = run({.serverName = "alpha",
                            .ofile = report.c_str(),
                            .acctPath2 = logs.c_str(),
                            .oidPath = oids.c_str(),
                            .dflg = 1});
    unsetenv("QV_REGISTRY");
    return status;
}

TEST(Deletion, TheReportIsSyncedAndInPlaceBeforeALogIsDeleted) {
    using Change = std::function<void(const fs::path &)>; // changes the report at its first sync
    const Change nothing = [](const fs::path &) {};
    const auto expectCalls = [](const char *label, const char *expected, const Change &change, int commit = 0,
                                int firstSync = 0, OS_outputKind kind = OS_outputKind::File) {
        SCOPED_TRACE(label);
        PrintSystem system;
        for (const char *tail : {"19990301", "19990302"})
            system.save(tail, marchLog());
        const fs::path report = system / "report";
        writeFile(report, "");
        std::string calls;
        const Scripted kinds(script::OS_KindOfOutput, [&](int) { return kind; });
        const Scripted committed(script::_commit, [&](int) {
            if (calls.empty()) {
                EXPECT_EQ(readFile(report), "job-name\nmarch\n") << "the lines are written before the sync";
                change(report);
            }
            calls += "commit ";
            return commit;
        });
        const Scripted synced(script::OS_SyncFolderOf, [&](int) {
            const int result = calls.find("folder") == std::string::npos ? firstSync : 0;
            calls += "folder ";
            return result;
        });
        const Scripted unlinked(script::_unlink, [&](const char *name) {
            calls += "unlink ";
            EXPECT_TRUE(fs::remove(name));
            return 0;
        });
        EXPECT_EQ(deleteInProcess(system, report), 0);
        EXPECT_EQ(calls, expected);
    };
    expectCalls("file", "commit folder unlink commit unlink ", nothing);
    expectCalls("block device", "commit unlink commit unlink ", nothing, 0, 0, OS_outputKind::BlockDevice);
    expectCalls("file not synced", "commit ", nothing, -1);
    expectCalls("block device not synced", "commit ", nothing, -1, 0, OS_outputKind::BlockDevice);
    expectCalls("folder not synced once", "commit folder commit ", nothing, 0, -1);
    const char *const kept = "commit folder commit ";
    expectCalls("truncated", kept, [](const fs::path &report) { fs::resize_file(report, 9); });
    expectCalls("appended to", kept, [](const fs::path &report) {
        writeFile(report, readFile(report) + "other\n"); // keeps the inode
    });
    expectCalls("moved", kept, [](const fs::path &report) { fs::rename(report, report.string() + '2'); });
    expectCalls("removed", kept, [](const fs::path &report) { fs::remove(report); });
}

TEST(Deletion, TheProgramsLogMayShareTheReportFile) {
    for (const bool byName : {false, true}) {
        SCOPED_TRACE(byName ? "QV_LOG=report" : "QV_LOG=stderr");
        PrintSystem system;
        system.save(kTail, marchLog());
        const fs::path report = system / "report";
        if (byName) {
            setenv("QV_LOG", report.c_str(), 1);
            LOG__Reset();
            LOG_CondMessage(LOG_ERROR, "f.cpp", 1, "before the report is opened");
            EXPECT_EQ(deleteInProcess(system, report), 0);
            unsetenv("QV_LOG");
            LOG__Reset();
        } else {
            const Descriptor error(open(report.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
            const ToolRun logged = {.environment = {{"QV_LOG", "stderr"}}, .error = error.get()};
            EXPECT_EQ(system.run({"-d", "-o", report, "alpha"}, logged).status, 0);
        }
        EXPECT_FALSE(fs::exists(system.log(kTail)));
        const std::string lines = readFile(report);
        EXPECT_NE(lines.find("\njob-name\nmarch\n"), lines.npos) << lines;
        EXPECT_NE(lines.find("ALA_A_LAST_ATTRIBUTE\n"), lines.npos) << lines;
    }
}

TEST(Deletion, ASignalEndsTheRunWithinALongLine) {
    PrintSystem system;
    system.save(kTail, logOf({jobOf({{"job-name", {std::string(600'000, 'x')}}})}));
    const fs::path report = system / "report";
    writeFile(report, "");
    int asked = 0;
    const Scripted signal(script::OS_NotedSignal, [&] { return ++asked > 1 ? SIGTERM : 0; });
    EXPECT_EQ(deleteInProcess(system, report), 0);
    EXPECT_EQ(readFile(report), "job-name\n");
    EXPECT_TRUE(fs::exists(system.log(kTail)));
}
