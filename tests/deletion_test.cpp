// -d deletes a log only when nothing of it exists there alone.
#include <gtest/gtest.h>

#include <functional>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"
#include "tests/support/scripted_os.h"
#include "tool/run.h"

using namespace qvledger;

using namespace samples;
namespace fs = std::filesystem;

constexpr std::time_t kNoonOfMarch1st = 920289600; // 1999-03-01 12:00 UTC
static const char *const kTail = "19990301";
static const Value kUnreadable{Bytes("\0\0\0\x7f", 4)}; // a text without its characters

static Job march() {
    return jobOf({{"job-name", {"march"}}});
}

// A record whose document's attribute has these values.
static Job withDocument(const std::vector<Value> &values) {
    return Job(march()).document().attribute(dotted("document-name"), STRING, values);
}

static bool wasKept(const ToolResult &result, const std::string &why) {
    return result.log.find(why) != std::string::npos &&
           result.log.find("is not deleted: ") != std::string::npos;
}

TEST(Deletion, LogsThatAreNotWhollyInTheReportStay) {
    const Value text{packString("t")};
    const std::string name = dotted("job-name");
    const Bytes zero(4, '\0');
    const auto expectDeleted = [](bool deleted, const char *label, const Log &log,
                                  const char *options = "-d") {
        SCOPED_TRACE(label);
        PrintSystem system;
        system.save(kTail, log);
        const ToolResult result = system.run({options, "alpha"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(fs::exists(system.log(kTail)), !deleted);
        EXPECT_EQ(wasKept(result, "the log for the date 19990301"), !deleted) << result.log;
    };
    const Log sound = logOf({march(), withDocument({text})});
    expectDeleted(true, "sound", sound, "-da");
    expectDeleted(true, "no record", Log());
    expectDeleted(false, "record cut short", Log(sound).cutTo(sound.size() - 1));
    expectDeleted(false, "stray bytes", Log(sound).raw("abc"));
    expectDeleted(false, "record count of zero", Log(sound).raw(zero));
    expectDeleted(false, "unreadable record", logOf({march(), Job().attribute(name, STRING, {kUnreadable})}));
    expectDeleted(false, "unreadable later attribute",
                  logOf({march().attribute(name, STRING, {kUnreadable})}));
    expectDeleted(false, "unreadable first of several values",
                  logOf({Job().attribute(name, STRING, {kUnreadable, text})}));
    expectDeleted(
        false, "first of several values passed over",
        logOf({Job().attribute(name, OBJECT_IDENTIFIER, {packUint(4711), packUint(shortOid("job-name"))})}));
    expectDeleted(false, "unknown attribute", logOf({march(), Job().attribute("1.2.3.4", STRING, {text})}));
    expectDeleted(false, "unreadable first document", logOf({withDocument({kUnreadable})}), "-da");
    Job later = withDocument({text});
    later.document().attribute(dotted("document-name"), STRING, {kUnreadable});
    expectDeleted(false, "unreadable later document", logOf({later}), "-da");
    expectDeleted(true, "unreadable document that is not asked for", logOf({later}));
}

TEST(Deletion, OnlyLogsOfTheRangeThatOpenedGo) {
    PrintSystem system;
    for (const char *tail : {"19990228", "19990301", "19990302", "19990303"})
        system.save(tail, logOf({march()}));
    system.save("19990302", logOf({march()}, {.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}));
    const fs::path report = system / "report";
    EXPECT_EQ(system.run({"-d", "-o", report, "-s", "19990301", "-e", "19990302", "alpha"}).status, 7);
    EXPECT_TRUE(fs::exists(system.log("19990228")));
    EXPECT_FALSE(fs::exists(system.log("19990301")));
    EXPECT_TRUE(fs::exists(system.log("19990302")));
    EXPECT_TRUE(fs::exists(system.log("19990303")));
    EXPECT_EQ(readFile(report), "job-name\nmarch\n") << "it holds all that is left of the deleted log";
}

TEST(Deletion, CurrentLogStays) {
    PrintSystem system;
    system.save("current", logOf({march()}));
    ToolResult result = system.run({"-d", "alpha"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.entries, std::vector<std::string>{});

    setChanged(system.log("current"), kNoonOfMarch1st); // left over from a past day
    result = system.run({"-d", "alpha"});
    EXPECT_EQ(result.status, 26);
    EXPECT_EQ(result.out, "job-name\nmarch\n");
    EXPECT_EQ(result.err, "Unable to delete the accounting log for the date 19990301.\n");
    EXPECT_EQ(result.entries, std::vector<std::string>{"unable to delete file."});
    EXPECT_TRUE(fs::exists(system.log("current")));
}

TEST(Deletion, LogsWhoseLinesAreLostStayAndNoFurtherOneIsRead) {
    int pipe[2];
    ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
    close(pipe[0]);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const auto expectKept = [](const char *label, const std::vector<std::string> &arguments,
                               const ToolRun &run, const std::string &err) {
        SCOPED_TRACE(label);
        PrintSystem system;
        system.save("19990301", logOf({jobOf({{"job-name", {std::string(600'000, 'x')}}})}));
        system.save("19990302", logOf({march()}));
        const ToolResult result = system.run(arguments, run);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, err);
        EXPECT_TRUE(fs::exists(system.log("19990301")) && fs::exists(system.log("19990302")));
        EXPECT_NE(result.log.find("the report could not be written: "), std::string::npos);
        EXPECT_TRUE(wasKept(result, "the log for the date 19990301")) << result.log;
        EXPECT_FALSE(wasKept(result, "the log for the date 19990302")) << result.log;
    };
    const std::string output = "qvledger: the report could not be written to standard output: ";
    expectKept("full device", {"-d", "alpha"}, {.output = full}, output + "No space left on device.\n");
    expectKept("pipe without a reader", {"-d", "alpha"}, {.output = pipe[1]}, "");
    expectKept("closed stream", {"-d", "alpha"}, {.closed = {1}}, output + "Bad file descriptor.\n");
    expectKept("report file on a full device", {"-d", "-o", "/dev/full", "alpha"}, {},
               "qvledger: the report /dev/full could not be written: No space left on device.\n");
    close(pipe[1]);
    close(full);

    PrintSystem system;
    system.save("19990301", logOf({march()}));
    const ToolResult result = system.run({"-d", "-o", "/dev/null", "alpha"});
    EXPECT_EQ(result.err, "");
    EXPECT_FALSE(fs::exists(system.log("19990301"))) << "what has no disk is safe once it is written";
}

// The report's pipe is kept full, so that the tool has read the log to its end and waits before it deletes.
TEST(Deletion, WhatTookTheLogsPlaceStays) {
    const auto expectAfter = [](const char *label, const char *tail,
                                const std::function<void(PrintSystem &)> &change, const char *why = nullptr) {
        SCOPED_TRACE(label);
        PrintSystem system;
        system.save(tail, logOf({jobOf({{"job-name", {std::string(20'000, 'x')}}})}));
        setChanged(system.log(tail), kNoonOfMarch1st);
        int pipe[2];
        ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
        const int size = fcntl(pipe[1], F_SETPIPE_SZ, 4096);
        const pid_t tool = system.start({"-d", "alpha"}, {.output = pipe[1]});
        close(pipe[1]);
        int waiting = 0;
        for (int tries = 0; waiting < size && tries < 5000; ++tries) {
            EXPECT_EQ(ioctl(pipe[0], FIONREAD, &waiting), 0);
            usleep(1000);
        }
        EXPECT_EQ(waiting, size);
        change(system);
        char drained[4096];
        while (read(pipe[0], drained, sizeof drained) > 0) {
        }
        close(pipe[0]);
        const ToolResult result = system.finish(tool);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(fs::exists(system.log(kTail)), why != nullptr);
        EXPECT_NE(result.log.find(why != nullptr ? why : ""), std::string::npos) << result.log;
    };
    const auto append = [](const fs::path &path) {
        const Log grown = logOf({march()});
        writeFile(path, readFile(path) + grown.bytes().substr(grown.records()[0])); // the same file
    };
    const auto nameOfDay = [](const PrintSystem &system) {
        fs::rename(system.log("current"), system.log(kTail));
    };
    const char *const grew = "it is not as long as what was read of it",
                      *other = "it is not the file that was read",
                      *written = "it was written to since it was opened";

    expectAfter("unchanged", kTail, [](PrintSystem &) {});
    expectAfter("current log got the day's name", "current", nameOfDay);
    const auto renameAndGrow = [&](PrintSystem &system) {
        nameOfDay(system);
        append(system.log(kTail));
    };
    expectAfter("current log got the day's name and grew", "current", renameAndGrow, grew);
    expectAfter(
        "shortened", kTail, [](PrintSystem &system) { fs::resize_file(system.log(kTail), 10); }, grew);
    const auto overwrite = [](PrintSystem &system) {
        Bytes bytes = readFile(system.log(kTail));
        writeFile(system.log(kTail), bytes.replace(bytes.size() - 100, 8, "reprints")); // the same file
    };
    expectAfter("overwritten in place", kTail, overwrite, written);
    const auto inTheWay = [](PrintSystem &system) { writeFile(system.log("19990301.being-deleted"), ""); };
    expectAfter("its name for the time of the deletion is taken", kTail, inTheWay, "is taken");
    const auto copy = [](PrintSystem &system) {
        fs::copy_file(system.log(kTail), system.log("copy"));
        fs::rename(system.log("copy"), system.log(kTail));
    };
    expectAfter("another file", kTail, copy, other);
    const auto link = [](PrintSystem &system) {
        fs::rename(system.log(kTail), system / "moved");
        fs::create_symlink(system / "moved", system.log(kTail));
    };
    expectAfter("link to the file", kTail, link, other);
    int writer = -1;
    const auto openToWrite = [&](PrintSystem &system) {
        writer = open(system.log(kTail).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    };
    expectAfter("open for writing", kTail, openToWrite, "another program has it open for writing");
    close(writer);
}

// In this process, to see and to fail the calls that put the report on its disk.
TEST(Deletion, ReportFileIsOnItsDiskBeforeALogGoes) {
    const auto expectCalls = [](const char *label, int commit, int sync, bool existing,
                                const char *expected) {
        SCOPED_TRACE(label);
        PrintSystem system;
        for (const char *tail : {"19990301", "19990302"})
            system.save(tail, logOf({march()}));
        const std::string report = system / "report", logs = system.root.logs(), oids = system.root.oids();
        if (existing)
            writeFile(report, "");
        setenv("QV_REGISTRY", system.root.registry().c_str(), 1);
        std::string calls;
        const Scripted committed(script::_commit, [&](int) {
            EXPECT_TRUE(readFile(report).starts_with("job-name\nmarch\n"))
                << "what is synced was written before";
            calls += "commit ";
            return commit;
        });
        const Scripted synced(script::OS_SyncFolderOf, [&](int) {
            calls += "folder ";
            return sync;
        });
        const Scripted unlinked(script::_unlink, [&](const char *name) {
            calls += "unlink ";
            EXPECT_TRUE(fs::remove(name));
            return 0;
        });
        EXPECT_EQ(run({.serverName = "alpha",
                       .ofile = report.c_str(),
                       .acctPath2 = logs.c_str(),
                       .oidPath = oids.c_str(),
                       .dflg = 1}),
                  0);
        unsetenv("QV_REGISTRY");
        EXPECT_EQ(calls, expected);
    };
    expectCalls("new file", 0, 0, false, "commit folder unlink commit unlink ");
    expectCalls("existing file", 0, 0, true, "commit folder unlink commit unlink ");
    expectCalls("file not synced", -1, 0, false, "commit ");
    expectCalls("folder not synced", 0, -1, false, "commit folder commit ");
}

TEST(Deletion, RunsBesideOneAnotherReportALogOnce) {
    PrintSystem system;
    const fs::path report = system / "report", aside = system.log("19990301.being-deleted");
    system.save(kTail, logOf({march()}));
    const int held = open(system.log(kTail).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(OS_LockFile(held), OS_DONE);
    const pid_t waiting = system.start({"-d", "-o", report, "alpha"});
    usleep(1'300'000);
    EXPECT_EQ(waitpid(waiting, nullptr, WNOHANG), 0) << "it waits for the log";
    fs::remove(system.log(kTail)); // as the run that has it does
    close(held);
    const ToolResult result = system.finish(waiting);
    EXPECT_EQ(result.status, 6);
    EXPECT_EQ(result.err, "qvledger: waiting for " + system.log(kTail).string() +
                              ", which another run holds.\n"
                              "Unable to open the accounting log for the date 19990301.\n");
    EXPECT_FALSE(fs::exists(report));

    system.save("19990301.being-deleted", logOf({march()})); // a killed run's
    EXPECT_EQ(system.run({"alpha"}).status, 29) << "it is no log";
    EXPECT_EQ(system.run({"-d", "-o", report, "alpha"}).status, 0);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n");
    EXPECT_FALSE(fs::exists(aside) || fs::exists(system.log(kTail)));
    for (const char *tail : {"19990301.being-deleted", kTail})
        system.save(tail, logOf({march()}));
    EXPECT_EQ(system.run({"-d", "alpha"}).err, "qvledger: a log that was not deleted stays under the name " +
                                                   aside.string() + ": another file has its own name.\n");
    EXPECT_TRUE(fs::exists(aside) && fs::exists(system.log(kTail))) << "neither takes the other's place";
}
