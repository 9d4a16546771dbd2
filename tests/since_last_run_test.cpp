// qvledger-json -c: records that no earlier run has written, and the state file.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>

#include "platform/descriptor.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

namespace {

class SinceLastRun : public testing::Test {
protected:
    ToolResult run(std::vector<std::string> arguments = {}, ToolRun settings = {}) {
        arguments.insert(arguments.begin(), {"-c", state});
        arguments.emplace_back("alpha");
        settings.program = QVLEDGER_JSON_BINARY;
        return system.run(arguments, settings);
    }

    PrintSystem system;
    const fs::path state = system / "state";
};

} // namespace

static const std::string kNothing = "qvledger-json state 1\n"; // contents of a state file without logs

static Log logOfNames(const std::vector<std::string> &names) {
    std::vector<Job> jobs;
    for (const std::string &name : names)
        jobs.push_back(jobOf({{"job-name", {name}}}));
    return logOf(jobs);
}

// Returns the names of the jobs, with their numbers, and the end of each log: "1 a, end 1".
static std::string shortened(const std::string &lines) {
    std::string text;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        const auto after = [&](const std::string &start) {
            const std::size_t at = line.find(start) + start.size();
            return line.substr(at, line.find_first_of("\",}", at) - at);
        };
        text += text.empty() ? "" : ", ";
        if (line.find("\"record\":") != line.npos)
            text += after("\"record\":") + ' ' + after("\"job-name\":[\"");
        else
            text += (line.ends_with("true}") ? "end " : "cut ") + after("\"records\":");
    }
    return text;
}

TEST_F(SinceLastRun, RecordsAreWrittenOnceUnlessTheirLogIsInDoubt) {
    const auto expect = [&](const char *label, const std::string &lines) {
        EXPECT_EQ(shortened(run().out), lines) << label;
    };
    expect("no log", "");
    system.save("19990301", logOfNames({"a", "b"}));
    system.save("19990302", logOfNames({"c"}));
    expect("two logs", "1 a, 2 b, end 2, 1 c, end 1");
    expect("nothing new", "");
    system.save("19990302", logOfNames({"c", "d"}));
    expect("a log that grew", "2 d, end 2");
    system.save("current", logOfNames({"e"}));
    expect("a current log", "1 e, end 1");
    fs::rename(system.log("current"), system.log("19990303"));
    system.save("current", logOfNames({"f"}));
    expect("the current log was renamed, and another one began", "1 f, end 1");
    fs::rename(system.log("19990301"), system / "backup");
    expect("a deleted log", "");
    fs::rename(system / "backup", system.log("19990301"));
    expect("a restored log", "");
    system.save("19990301", logOfNames({"g"}));
    expect("another log of the same date", "1 g, end 1");
    system.save("19990302", logOfNames({"c"}));
    expect("a log restored from an older backup is in doubt", "1 c, end 1");
    system.save("19990302", logOfNames({"c", "new"}));
    expect("it grew again", "2 new, end 2");
    system.save("19990304", logOfNames({"h", "i"}).cutTo(logOfNames({"h", "i"}).size() - 1));
    expect("a cut log", "1 h, cut 1");
    expect("it is still cut", "cut 1");
    system.save("19990304", logOfNames({"h"}));
    expect("it was repaired", "end 1");
    system.save("19990304", logOfNames({"h", "i"}));
    expect("its last record is whole", "2 i, end 2");
    logOfNames({"a", "b"}).save(system.root.log("beta", "19990301"));
    EXPECT_EQ(shortened(run({"beta"}).out), "1 a, 2 b, end 2") << "the same log of another server";
    EXPECT_EQ(run({"beta"}).out, "");
}

TEST_F(SinceLastRun, RecordsAreRepeatedUnlessTheirLinesAreSafe) {
    system.save("19990301", logOfNames({"a"}));
    logOf({}, {.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}).save(system.log("19990302"));
    const qvledger::Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(run({}, {.output = full.get()}).status, 74);
    EXPECT_EQ(readFile(state), kNothing);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    EXPECT_EQ(run({}, {.output = ends[1]}).status, 74);
    close(ends[1]);
    const fs::path report = system / "report";
    const ToolResult unsynced = run({"-o", report}, {.failing = {report, "fsync:error=EIO"}});
    EXPECT_EQ(unsynced.status, 74);
    EXPECT_EQ(readFile(state), kNothing);
    const ToolResult unwritable = run({"-o", report}, {.failing = {state, "openat:error=EACCES:when=2"}});
    EXPECT_NE(unwritable.err.find("state cannot be used: Permission denied.\n"), unwritable.err.npos)
        << unwritable.err;
    EXPECT_EQ(unwritable.status, 74);
    // The run fails because of the second log, but its report is kept, because no later run may repeat it.
    fs::remove(report);
    fs::create_directory(system / "reports");
    const fs::path kept = system / "reports/report";
    EXPECT_EQ(run({"-o", kept}, {.failing = {system / "", "fsync:error=EIO"}}).status, 74);
    EXPECT_EQ(shortened(readFile(kept)), "1 a, end 1, cut 0");
    EXPECT_EQ(shortened(run().out), "cut 0");
}

TEST_F(SinceLastRun, ALogThatIsOverwrittenWhileItIsReadIsInDoubt) {
    const std::vector<std::string> old(300, std::string(1000, 'a')), other(500, std::string(1000, 'b'));
    system.save("19990301", logOfNames(old));
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const qvledger::Descriptor reader(ends[0]);
    const pid_t blocked =
        system.start({"-c", state, "alpha"}, {.output = ends[1], .program = QVLEDGER_JSON_BINARY});
    close(ends[1]);
    pollfd ready = {reader.get(), POLLIN, 0};
    ASSERT_EQ(poll(&ready, 1, 10'000), 1); // the run has read the log's beginning, and waits for its reader
    writeFile(system.log("19990301"), logOfNames(other).bytes());
    readAll(reader.get());
    EXPECT_EQ(system.finish(blocked).status, 0);
    EXPECT_NE(readFile(state), kNothing);
    EXPECT_NE(run().out.find("\"records\":500,\"complete\":true"), std::string::npos);
}

TEST_F(SinceLastRun, AnUnusableStateFileIsRefusedAndKept) {
    system.save("19990301", logOfNames({"a"}));
    for (const char *name : {"new", "new.lock"})
        EXPECT_EQ(system
                      .run({"-c", system / "new", "-o", system / "." / name, "alpha"},
                           {.program = QVLEDGER_JSON_BINARY})
                      .status,
                  30);
    EXPECT_FALSE(fs::exists(system / "new"));
    run();
    const std::string valid = readFile(state), line = valid.substr(valid.find('\n') + 1);
    const std::string start = "qvledger-json: the state file " + state.string();
    const auto expectRefused = [&](const std::string &why, const std::vector<std::string> &arguments = {},
                                   const ToolRun &settings = {}) {
        const std::string before = readFile(state);
        const ToolResult result = run(arguments, settings);
        EXPECT_EQ(result.status, 30) << why;
        EXPECT_EQ(result.err, start + " cannot be used: " + why + ".\n");
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(readFile(state), before);
    };
    EXPECT_EQ(system.run({"-c", "", "alpha"}, {.program = QVLEDGER_JSON_BINARY}).status, 1);
    expectRefused("the report would be written to it", {"-o", state});
    expectRefused("the report would be written to it", {"-o", state.string() + ".lock"});
    const qvledger::Descriptor output(open(state.c_str(), O_WRONLY | O_CLOEXEC));
    expectRefused("the report would be written to it", {}, {.output = output.get()});
    const std::string zero = "0" + line.substr(line.rfind('\t'));
    for (const std::string &text : {std::string("job-name\n"), std::string("qvledger-json state 1"),
                                    std::string(), valid.substr(0, valid.size() - 1)}) {
        writeFile(state, text);
        expectRefused("line " + std::to_string(text.starts_with(kNothing) ? 2 : 1) +
                      " is not from qvledger-json -c");
    }
    for (const std::string &text :
         {line + '\n', "x\t" + line, line.substr(line.find('\t') + 1), "%4x" + line, std::string("\n"),
          line.substr(0, line.rfind('\t', line.rfind('\t') - 1)) + '\t' + zero}) {
        writeFile(state, valid + text);
        expectRefused("line " + std::to_string(text == line + '\n' ? 4 : 3) +
                      " is not from qvledger-json -c");
    }
    fs::remove(state);
    fs::create_directory(state);
    EXPECT_EQ(run().err, start + " cannot be used: it is not a regular file.\n");
    fs::remove(state);
    fs::remove(state.string() + ".lock");
    fs::create_directory(state.string() + ".lock");
    EXPECT_EQ(run().err, start + ".lock cannot be used: it is not a regular file.\n");
}

TEST_F(SinceLastRun, TheStateFileKeepsItsLinkAndItsMode) {
    fs::create_symlink("real", state);
    writeFile(system / "real", kNothing);
    fs::permissions(system / "real", fs::perms(0640));
    for (const char *server : {"alpha", "a%\x7f b"}) {
        logOfNames({"a"}).save(system.root.log(server, "19990301"));
        run({server == std::string("alpha") ? "-t" : server});
    }
    EXPECT_TRUE(fs::is_symlink(state) && fs::exists(system / "real.lock"));
    EXPECT_EQ(fs::status(system / "real").permissions(), fs::perms(0640));
    EXPECT_EQ(run({"a%\x7f b"}).out, "");
    for (const fs::directory_entry &entry : fs::directory_iterator(system / ""))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".being-saved.")) << entry.path();
}
