// When -d deletes a log, and what happens to a log that others change.  deletion_report_test.cpp tests the
// report.
#include <gtest/gtest.h>

#include <functional>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "samples/sample_oids.h"
#include "tests/support/pipe.h"
#include "tests/support/run_tool.h"

using namespace qvledger;

using namespace samples;
namespace fs = std::filesystem;

constexpr std::time_t kNoonOfMarch1st = 920289600; // 1999-03-01 12:00 UTC
static const char *const kTail = "19990301";
static Job march() {
    return jobOf({{"job-name", {"march"}}});
}

// Returns a record with one document.  The document has one attribute with these values.
static Job withDocument(const std::vector<Value> &values) {
    return Job(march()).document().attribute(dotted("document-name"), STRING, values);
}

TEST(Deletion, ALogIsKeptUnlessTheReportHasAllOfIt) {
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
    expectDeleted(false, "only record cut after its first count", Log(sound).cutTo(sound.records()[0] + 4));
    expectDeleted(false, "stray bytes", Log(sound).raw("abc"));
    expectDeleted(false, "record count of zero", Log(sound).raw(zero));
    expectDeleted(false, "unreadable later attribute",
                  logOf({march().attribute(name, STRING, {kUnreadable})}));
    expectDeleted(false, "unreadable first value",
                  logOf({Job().attribute(name, STRING, {kUnreadable, text})}));
    expectDeleted(
        false, "first value skipped",
        logOf({Job().attribute(name, OBJECT_IDENTIFIER, {packUint(4711), packUint(shortOid("job-name"))})}));
    expectDeleted(false, "unknown attribute", logOf({march(), Job().attribute("1.2.3.4", STRING, {text})}));
    expectDeleted(false, "unreadable first document", logOf({withDocument({kUnreadable})}), "-da");
    Job later = withDocument({text});
    later.document().attribute(dotted("document-name"), STRING, {kUnreadable});
    expectDeleted(false, "unreadable later document", logOf({later}), "-da");
    expectDeleted(true, "unreadable document without -a", logOf({later}));
}

// Both runs fail.  A failed run that deleted a log keeps its new report.
static void expectDeletionOfTheOpenedLog(bool hasWriter) {
    PrintSystem system;
    for (const char *tail : {"19990228", "19990301", "19990303"})
        system.save(tail, marchLog());
    system.save("19990302", marchLog({.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}));
    const Descriptor writer(hasWriter ? open(system.log("19990301").c_str(), O_WRONLY | O_CLOEXEC) : -1);
    const fs::path report = system / "report";
    EXPECT_EQ(system.run({"-d", "-o", report, "-s", "19990301", "-e", "19990302", "alpha"}).status, 7);
    for (const char *tail : {"19990228", "19990302", "19990303"})
        EXPECT_TRUE(fs::exists(system.log(tail))) << tail;
    EXPECT_EQ(fs::exists(system.log("19990301")), hasWriter);
    EXPECT_EQ(readFile(report), hasWriter ? "" : "job-name\nmarch\n");
    EXPECT_NE(fs::exists(report), hasWriter);
}

TEST(Deletion, OnlyOpenedLogsOfTheRangeAreDeleted) {
    expectDeletionOfTheOpenedLog(false);
}

TEST(Deletion, ALogOpenForWritingIsKept) {
    expectDeletionOfTheOpenedLog(true);
}

TEST(Deletion, TheCurrentLogIsNeverDeleted) {
    PrintSystem system;
    system.save("current", logOf({march()}));
    ToolResult result = system.run({"-d", "alpha"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.entries, std::vector<std::string>{});

    setChanged(system.log("current"), kNoonOfMarch1st); // a current log of a past day
    result = system.run({"-d", "alpha"});
    EXPECT_EQ(result.status, 26);
    EXPECT_EQ(result.out, "job-name\nmarch\n");
    EXPECT_EQ(result.err, "Unable to delete the accounting log for the date 19990301.\n");
    EXPECT_EQ(result.entries, std::vector<std::string>{"unable to delete file."});
    EXPECT_TRUE(fs::exists(system.log("current")));
}

struct ChangeOfLog {
    const char *label, *tail;
    std::function<void(const PrintSystem &)> change;
    const char *why = nullptr; // reason to keep the log; null: it is deleted
};

// Changes the log after the tool has read it.  A full pipe as the report blocks the tool before the deletion.
static void expectKeptIfChanged(const ChangeOfLog &one) {
    SCOPED_TRACE(one.label);
    PrintSystem system;
    system.save(one.tail, logOf({jobOf({{"job-name", {std::string(20'000, 'x')}}})}));
    setChanged(system.log(one.tail), kNoonOfMarch1st);
    Pipe lines;
    const pid_t tool = system.start({"-d", "alpha"}, {.output = lines.writer()});
    lines.waitUntilFull(1);
    one.change(system);
    lines.drain();
    const ToolResult result = system.finish(tool);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(fs::exists(system.log(kTail)), one.why != nullptr);
    EXPECT_NE(result.log.find(one.why != nullptr ? one.why : ""), std::string::npos) << result.log;
}

static void moveAway(const PrintSystem &system) {
    fs::rename(system.log(kTail), system / "moved");
}
static const char *const kOther = "it is not the file that was read";

TEST(Deletion, AChangedOrReplacedLogIsKept) {
    const auto append = [](const fs::path &path) {
        const Log grown = logOf({march()});
        writeFile(path, readFile(path) + grown.bytes().substr(grown.records()[0])); // keeps the inode
    };
    const auto nameOfDay = [](const PrintSystem &system) {
        fs::rename(system.log("current"), system.log(kTail));
    };
    const auto overwrite = [](const PrintSystem &system) {
        Bytes bytes = readFile(system.log(kTail));
        writeFile(system.log(kTail), bytes.replace(bytes.size() - 100, 8, "reprints")); // keeps the inode
    };
    const char *const grew = "it is not as long as what was read of it";
    const ChangeOfLog cases[] = {
        {"unchanged", kTail, [](const PrintSystem &) {}},
        {"current log renamed to its day", "current", nameOfDay},
        {"current log renamed to its day and grown", "current",
         [&](const PrintSystem &system) { nameOfDay(system), append(system.log(kTail)); }, grew},
        {"shortened", kTail, [](const PrintSystem &system) { fs::resize_file(system.log(kTail), 10); }, grew},
        {"overwritten in place", kTail, overwrite, "it was written to since it was opened"},
        {"overwritten, with its time restored", kTail,
         [&](const PrintSystem &system) {
             overwrite(system), setChanged(system.log(kTail), kNoonOfMarch1st);
         },
         "it was changed since it was opened"},
        {"its temporary name is taken", kTail,
         [](const PrintSystem &system) { writeFile(system.log("19990301.being-deleted"), ""); },
         "temporary name"},
        {"another file", kTail,
         [](const PrintSystem &system) {
             moveAway(system), fs::copy_file(system / "moved", system.log(kTail));
         },
         kOther},
    };
    for (const ChangeOfLog &one : cases)
        expectKeptIfChanged(one);
}

TEST(Deletion, ALogThatIsNowALinkOrOpenForWritingIsKept) {
    expectKeptIfChanged({"link to the file", kTail,
                         [](const PrintSystem &system) {
                             moveAway(system), fs::create_symlink(system / "moved", system.log(kTail));
                         },
                         kOther});
    Descriptor writer(-1);
    expectKeptIfChanged({"open for writing", kTail,
                         [&](const PrintSystem &system) {
                             writer.reset(open(system.log(kTail).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
                         },
                         "another program has it open for writing"});
}

// fcntl() refuses a lease on some file systems, and to users other than the file's owner and root.
TEST(Deletion, AFailedCallKeepsTheLogAndIsLogged) {
    const struct {
        const char *name, *call;
        int minutes, status; // minutes since the last write to the log; status of the run
        const char *why;     // reason to keep the log; null: it is deleted
    } cases[] = {
        {"19990301.being-deleted", "fcntl:error=EACCES", 59, 0, "it was written to within the last hour"},
        {"19990301.being-deleted", "fcntl:error=EACCES", 61, 0, nullptr},
        {kTail, "renameat2:error=EBUSY", 0, 0, "another program has it open and does not let it be moved"},
        {kTail, "renameat2:error=EINVAL", 0, 0, "its file system cannot give it another name safely"},
        {kTail, "renameat2:error=EROFS", 0, 26, ""},
    };
    for (const auto &[name, call, minutes, status, why] : cases) {
        SCOPED_TRACE(std::string(call) + ' ' + std::to_string(minutes));
        PrintSystem system;
        system.save(kTail, marchLog());
        setChanged(system.log(kTail), std::time(nullptr) - minutes * 60);
        const ToolResult result = system.run({"-d", "alpha"}, {.failing = {system.log(name), call}});
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(fs::exists(system.log(kTail)), why != nullptr);
        EXPECT_EQ(wasKept(result, why != nullptr ? why : ""), why != nullptr && status == 0) << result.log;
    }
}

static const std::string kLeft =
    "qvledger: the log alpha.19990301.being-deleted is being deleted, or was left by a run that ended.\n";

TEST(Deletion, ConcurrentRunsReportALogOnce) {
    PrintSystem system;
    const fs::path report = system / "report", aside = system.log("19990301.being-deleted");
    system.save(kTail, logOf({march()}));
    const int locked = open(system.log(kTail).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(OS_LockFile(locked), OS_DONE);
    const pid_t waiting = system.start({"-d", "-o", report, "alpha"});
    usleep(1'300'000);
    EXPECT_EQ(waitpid(waiting, nullptr, WNOHANG), 0) << "the run waits for the log";
    fs::remove(system.log(kTail)); // as a deleting run does while it locks the log
    close(locked);
    const ToolResult result = system.finish(waiting);
    EXPECT_EQ(result.status, 6);
    EXPECT_EQ(result.err, "qvledger: waiting for " + system.log(kTail).string() +
                              ", which another run has locked.\n"
                              "Unable to open the accounting log for the date 19990301.\n");
    EXPECT_FALSE(fs::exists(report));

    system.save("19990301.being-deleted", logOf({march()}));
    const int deleting = open(aside.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(OS_LockFile(deleting), OS_DONE);
    EXPECT_EQ(system.run({"-d", "alpha"}).err,
              kLeft + "Unable to find the accounting logs for server alpha.\n");
    EXPECT_TRUE(fs::exists(aside)) << "the run that deletes it has not ended";
    close(deleting); // as if the deleting run were killed
    EXPECT_EQ(system.run({"-d", "alpha"}, {.failing = {aside, "flock:error=ENOLCK"}}).err,
              "qvledger: a log that was not deleted is still named " + aside.string() +
                  ": No locks available.\n" + kLeft +
                  "Unable to find the accounting logs for server alpha.\n");
}

TEST(Deletion, ALogLeftByAKilledRunGetsItsNameBackUnlessThatIsTaken) {
    PrintSystem system;
    const fs::path report = system / "report", aside = system.log("19990301.being-deleted");
    system.save("19990301.being-deleted", logOf({march()}));
    EXPECT_EQ(system.run({"alpha"}).status, 29) << "it is not listed as a log";
    EXPECT_EQ(system.run({"-d", "-o", report, "alpha"}).status, 0);
    EXPECT_EQ(readFile(report), "job-name\nmarch\n");
    EXPECT_FALSE(fs::exists(aside) || fs::exists(system.log(kTail)));
    for (const char *tail : {"19990301.being-deleted", kTail})
        system.save(tail, logOf({march()}));
    EXPECT_EQ(system.run({"-d", "alpha"}).err, "qvledger: a log that was not deleted is still named " +
                                                   aside.string() + ": another file has its own name.\n" +
                                                   kLeft);
    EXPECT_TRUE(fs::exists(aside) && fs::exists(system.log(kTail))) << "neither replaces the other";
}
