// Lines, escaping and statuses of qvledger-json; read errors and missing logs, also in other programs.
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static const ToolRun kJson{.program = QVLEDGER_JSON_BINARY};

// Return the expected lines of a record of alpha (`rest` begins with its attributes) and of a log's end.
static std::string recordLine(int number, const std::string &date, const std::string &rest) {
    return "{\"server\":\"alpha\",\"log\":\"alpha." + date + "\",\"record\":" + std::to_string(number) +
           ",\"date\":" + date + ",\"attributes\":" + rest + "\n";
}
static std::string endLine(const std::string &log, int records, bool complete = true) {
    return "{\"server\":\"" + log.substr(0, log.find('.')) + "\",\"log\":\"" + log +
           "\",\"records\":" + std::to_string(records) +
           ",\"complete\":" + (complete ? "true}\n" : "false}\n");
}

TEST(Json, EveryTextIsEscapedAsValidJson) {
    const struct {
        const char *label, *text, *json;
    } cases[] = {
        {"characters to be escaped", R"(a"b\c/)", R"(a\"b\\c/)"},
        {"controls", "\b\f\n\r\t\x01\x1f\x7f", "\\b\\f\\n\\r\\t\\u0001\\u001f\x7f"},
        {"UTF-8 of each length", "ü€\U0001F5A8", "ü€\U0001F5A8"},
        {"first and last characters", "\xEE\x80\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF",
         "\xEE\x80\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF"},
        {"invalid bytes", "a\x80z\xFF", "a\uFFFDz\uFFFD"},
        {"incomplete characters", "\xE2\x82z\xC3", "\uFFFD\uFFFDz\uFFFD"},
        {"overlong forms", "\xC0\x80\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"half a surrogate pair", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"above U+10FFFF", "\xF4\x90\x80\x80\xF5\x80\x80\x80",
         "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
    };
    std::vector<std::string> texts;
    std::string values;
    for (const auto &one : cases) {
        texts.emplace_back(one.text);
        values += (values.empty() ? "\"" : ",\"") + std::string(one.json) + '"';
    }
    PrintSystem system;
    system.save("19990301", logOf({jobOf({{"job-name", texts}})}));
    EXPECT_EQ(system.run({"alpha"}, kJson).out,
              recordLine(1, "19990301", "{\"job-name\":[" + values + "]},\"documents\":[]}") +
                  endLine("alpha.19990301", 1));
}

TEST(Json, ALineHasAJobWithItsDocumentsAndIsMarkedIfIncomplete) {
    Job job = jobOf({{"job-name", {"one", "two"}}, {"job-owner", {}}});
    for (const char *name : {"a", "b"}) {
        job.document();
        addTexts(job, {{"document-name", {name}}, {"page-select", {}}});
    }
    Job damaged = jobOf({{"job-name", {"seen"}}});
    damaged.attribute(dotted("job-copies"), INTEGER, {Value("xy")});
    Job damagedDocument = jobOf({{"job-name", {"whole"}}});
    damagedDocument.document().attribute(dotted("job-copies"), INTEGER, {Value("xy")});
    PrintSystem system;
    system.save("19990301", logOf({job}));
    system.save("19990302", logOf({damaged, damagedDocument, jobOf({{"job-name", {"next"}}})}));
    std::ofstream(system.log("19990302"), std::ios::app) << "cut";
    const ToolResult result = system.run({"-s", "19990301", "-e", "19990302", "alpha"}, kJson);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "Unable to read accounting information because the data appears to be corrupted.\n"
                          "Unable to read the accounting file.\n");
    EXPECT_EQ(
        result.out,
        recordLine(
            1, "19990301",
            R"({"job-name":["one","two"],"job-owner":[""]},"documents":[)"
            R"({"document-name":["a"],"page-select":[""]},{"document-name":["b"],"page-select":[""]}]})") +
            endLine("alpha.19990301", 1) +
            recordLine(1, "19990302", R"({"job-name":["seen"]},"documents":[],"incomplete":true})") +
            recordLine(2, "19990302", R"({"job-name":["whole"]},"documents":[{}],"incomplete":true})") +
            recordLine(3, "19990302", R"({"job-name":["next"]},"documents":[]})") +
            endLine("alpha.19990302", 3, false));
}

TEST(Json, TypedValuesHaveTheFormOfTheirKind) {
    const auto at = [](std::int32_t month, std::int32_t hour) {
        return Value(pack(samples::Time{
            .year = 1999, .month = month, .day = 31, .hour = hour, .minute = 59, .second = 58}));
    };
    Job job = jobOf({{"job-name", {"12"}}});
    job.attribute(dotted("job-copies"), INTEGER, {Value(packInt(-3)), Value(packInt(2'147'483'647))})
        .attribute(dotted("job-priority"), INTEGER, {})
        .attribute(dotted("job-hold"), BOOLEAN, {packInt(1), packInt(0), packInt(2)})
        .attribute(dotted("job-cost"), REAL, {packDouble(3.84), packDouble(-0.25), packDouble(-HUGE_VAL)})
        .attribute(dotted("toner-used-grams"), REAL_62, {packDouble(NAN)})
        .attribute(dotted("processing-duration"), DELTA_TIME, {packUint(90061), packUint(0xFFFFFFFF)})
        .attribute(dotted("completion-time"), TIME, {at(12, 23), at(7, 1)});
    PrintSystem system;
    system.save("19990301", logOf({job}));
    ToolRun inZone = kJson;
    inZone.environment = {{"TZ", "CET-1CEST"}};
    EXPECT_EQ(system.run({"-t", "alpha"}, inZone).out,
              recordLine(1, "19990301",
                         R"({"job-name":["12"],"job-copies":[-3,2147483647],"job-priority":[null],)"
                         R"("job-hold":[true,false,null],"job-cost":[3.840000,-0.250000,"-inf"],)"
                         R"("toner-used-grams":["nan"],"processing-duration":[90061,4294967295],)"
                         R"("completion-time":["2000-01-01T00:59:58+01:00","1999-07-31T03:59:58+02:00"]},)"
                         R"("documents":[]})") +
                  endLine("alpha.19990301", 1));
    inZone.environment = {{"TZ", "NST3:30:20"}}; // an offset with seconds
    EXPECT_NE(system.run({"-t", "alpha"}, inZone).out.find("\"1999-12-31T20:29:58-03:30\""),
              std::string::npos);
}

// On Windows the C library refuses most of these years.
TEST(Json, TimesOfAllYearsAreConverted) {
    const auto startOf = [](std::int32_t year) {
        return Value(pack(samples::Time{.year = year, .month = 1, .day = 1}));
    };
    Job job;
    job.attribute(
        dotted("completion-time"), TIME,
        {Value(pack(samples::Time{})), startOf(1955), startOf(1970), startOf(3500), startOf(32767)});
    PrintSystem system;
    system.save("19990301", logOf({job}));
    ToolRun inZone = kJson;
    inZone.environment = {{"TZ", "UTC0"}};
    EXPECT_EQ(system.run({"-t", "alpha"}, inZone).out,
              recordLine(1, "19990301",
                         R"({"completion-time":["-000001-11-30T00:00:00+00:00","1955-01-01T00:00:00+00:00",)"
                         R"("1970-01-01T00:00:00+00:00","3500-01-01T00:00:00+00:00",)"
                         R"("+032767-01-01T00:00:00+00:00"]},"documents":[]})") +
                  endLine("alpha.19990301", 1));
}

TEST(Json, EachServerIsReportedWithItsOwnSettings) {
    PrintSystem system;
    const SampleRoot other(system / "other");
    const fs::path report = system / "report";
    system.save("19990301", logOf({}, {.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}));
    Job job = jobOf({{"job-name", {"x"}}});
    job.attribute(dotted("completion-time"), TIME,
                  {Value(pack(samples::Time{.year = 1999, .month = 3, .day = 2, .hour = 1}))});
    for (const char *server : {"beta", "much"})
        logOf({job}).save(other.log(server, "19990302"));
    system.root.writeRegistry({{serverKey("alpha"), {{"QV_ROOT", system.root.path()}}},
                               {serverKey("idle"), {{"QV_ROOT", other.path()}}},
                               {serverKey("much"), {{"QV_ROOT", other.path()}, {"X", std::string(260, 'x')}}},
                               {serverKey("beta"), {{"QV_ROOT", other.path()}}},
                               {serverKey("bare"), {{"OTHER", "1"}}},
                               {serverKey("far"), {{"QV_ROOT", other.path()}, {"TZ", "JST-9"}}}});
    const ToolResult result = system.run({"alpha", "bare", "none", "far", "beta"}, kJson);
    EXPECT_EQ(result.status, 7) << result.err;
    EXPECT_EQ(system.run({"idle", "alpha"}, kJson).status, 7) << "a failure outweighs a server without logs";
    EXPECT_EQ(result.err.find("server beta"), std::string::npos) << result.err;
    for (const char *end :
         {"bare ended with status 100", // bare does not inherit alpha's root
          "alpha ended with status 7", "none ended with status 30", "far ended with status 30"})
        EXPECT_NE(result.err.find(end), std::string::npos) << end << '\n' << result.err;
    EXPECT_TRUE(result.out.starts_with(endLine("alpha.19990301", 0, false))) << result.out;
    EXPECT_TRUE(result.out.ends_with(endLine("beta.19990302", 1))) << result.out;

    // A new report is removed if a server failed, but kept if only one of the servers has no logs.
    const std::vector<std::string> dated = {"-s", "19990302", "-o", report, "alpha", "beta"};
    EXPECT_EQ(system.run(dated, kJson).status, 29);
    EXPECT_TRUE(readFile(report).ends_with(endLine("beta.19990302", 1)));
    fs::remove(report);
    EXPECT_EQ(system.run({"-o", report, "beta", "alpha"}, kJson).status, 7);
    EXPECT_FALSE(fs::exists(report));
    EXPECT_EQ(system.run({"-o", report, "beta", "idle"}, kJson).status, 29);
    EXPECT_TRUE(readFile(report).ends_with(endLine("beta.19990302", 1)));
    writeFile(report, "");
    // Checking whether the report is a log of the second server must not change the first server's time zone.
    system.run({"-o", report, "beta", "far"}, kJson);
    EXPECT_EQ(readFile(report), system.run({"beta", "far"}, kJson).out);
    // A log of any of the servers is refused as the report, even if that server's settings are refused.
    for (const char *of : {"beta", "much"})
        for (const char *beside : {"alpha", "beta", "much"})
            for (const auto &[first, second] : {std::pair{of, beside}, {beside, of}}) {
                if (first == second)
                    continue;
                const fs::path log = other.log(of, "19990302");
                const std::string before = readFile(log);
                EXPECT_EQ(system.run({"-s", "19990302", "-o", log, first, second}, kJson).status, 30)
                    << first;
                EXPECT_EQ(readFile(log), before) << first << ' ' << second;
            }
}

// In these cases, the statuses and messages of the two programs differ only in the usage text.
TEST(Json, StatusAndMessagesEqualThoseOfTheTool) {
    PrintSystem system;
    system.save("19990301", logOf({}, {.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}));
    system.save("19990302", logOf({jobOf({{"job-name", {"x"}}})}));
    system.save("19990303", logOf({}).cutTo(20));
    const std::pair<std::vector<std::string>, int> cases[] = {{{"-s", "19990230", "alpha"}, 30},
                                                              {{"-s", "19990304", "alpha"}, 29},
                                                              {{"-O", "/nonexistent", "alpha"}, 4},
                                                              {{"alpha"}, 11}};
    for (const auto &[arguments, status] : cases) {
        SCOPED_TRACE(status);
        const ToolResult expected = system.run(arguments), result = system.run(arguments, kJson);
        EXPECT_TRUE(result.status == status && expected.status == status) << result.status;
        EXPECT_EQ(result.err, expected.err);
    }
    const std::string usage = "Command line usage: qvledger-json [-h] [-V] [-t] [-c <state file>]\n"
                              "   [-o <filename>] [-s <start date>] [-e <end date>]\n"
                              "   [-p <path>] [-O <path>] serverName ...\n";
    for (const std::vector<std::string> &arguments : std::vector<std::vector<std::string>>{
             {"-d"}, {"-a"}, {"-g"}, {"-x"}, {"-s"}, {""}, {"alpha", "beta", "alpha"}}) {
        const ToolResult result = system.run(arguments, kJson);
        EXPECT_EQ(result.status, 1) << arguments[0];
        EXPECT_EQ(result.err, usage) << arguments[0];
    }
    EXPECT_EQ(system.run({"--help"}, kJson).err, usage);
    EXPECT_EQ(system.run({"--version"}, kJson).out, system.run({"-V"}).out);
}

TEST(Json, AFullDiskIsReportedAndHasItsStatus) {
    PrintSystem system;
    system.save("19990301", logOf({jobOf({{"job-name", {"x"}}})}));
    const qvledger::Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    const ToolResult result =
        system.run({"alpha", "none"}, {.output = full.get(), .program = QVLEDGER_JSON_BINARY});
    EXPECT_EQ(result.status, 74);
    EXPECT_EQ(
        result.err,
        "qvledger-json: the report could not be written to standard output: No space left on device.\n");
    EXPECT_EQ(result.entries, std::vector<std::string>{"the report could not be written: standard output: "
                                                       "No space left on device"});
}

TEST(Json, AReadErrorIsNotTheEndOfALog) {
    PrintSystem system;
    const Job large = jobOf({{"job-name", {std::string(200'000, 'x')}}});
    system.save("19990301", logOf({large, large}));
    const std::string log = system.log("19990301");
    const std::string message = ": the log alpha.19990301 cannot be read to its end: Input/output error.\n";
    const auto atRead = [&](int number, const char *program) {
        return ToolRun{.failing = {log, "read,pread64:error=EIO:when=" + std::to_string(number) + '+'},
                       .program = program};
    };
    for (const int number : {2, 3, 4, 5}) { // the fifth read reports the end of the file
        SCOPED_TRACE(number);
        // Under -d the header is read twice more, before and after the log is locked.
        const ToolResult report = system.run({"-d", "alpha"}, atRead(number + 2, QVLEDGER_BINARY));
        EXPECT_EQ(report.status, 0);
        EXPECT_TRUE(report.err.ends_with(message)) << report.err;
        EXPECT_TRUE(fs::exists(log));
        const ToolResult json = system.run({"alpha"}, atRead(number, QVLEDGER_JSON_BINARY));
        EXPECT_EQ(json.status, 11);
        EXPECT_TRUE(json.out.ends_with("\"complete\":false}\n")) << json.out.substr(json.out.size() - 200);
        EXPECT_TRUE(json.err.ends_with(message)) << json.err;
        EXPECT_EQ(system.run({"alpha"}, atRead(number, QVLEDGER_CHECK_BINARY)).status, 11);
    }
}

TEST(Json, TheCheckFindsALogThatIsRenamedAtMidnight) {
    PrintSystem system;
    system.save("current", marchLog());
    const pid_t check =
        system.start({"alpha"}, {.failing = {system.root.logs(), "getdents64:delay_exit=1000000:when=2"},
                                 .program = QVLEDGER_CHECK_BINARY});
    usleep(300'000);
    fs::rename(system.log("current"), system.log("19990301"));
    const ToolResult result = system.finish(check);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("alpha\talpha.19990301\t"), result.out.npos) << result.out;
    EXPECT_EQ(result.out.find("alpha.current"), result.out.npos);
}

TEST(Json, LogsThatTheListMayLackAreReported) {
    PrintSystem system;
    const auto expectEach = [&](const std::string &message, int status, const std::string &jsonEnd,
                                const std::pair<std::string, std::string> &failing) {
        for (const char *program : {QVLEDGER_BINARY, QVLEDGER_JSON_BINARY, QVLEDGER_CHECK_BINARY}) {
            const std::string name = fs::path(program).filename();
            const ToolResult result = system.run({"alpha"}, {.failing = failing, .program = program});
            EXPECT_EQ(result.err, name + ": " + message + "\n");
            EXPECT_EQ(result.status, name == "qvledger" ? 0 : status) << name;
            EXPECT_TRUE(name != "qvledger-json" || result.out.ends_with(jsonEnd)) << result.out;
        }
    };
    system.save("19990301", marchLog());
    const std::string whole = endLine("alpha.19990301", 1);
    expectEach("logs of the server alpha may be missing, because their folder cannot be read to its end: "
               "Input/output error.",
               27, whole + "{\"server\":\"alpha\",\"complete\":false}\n",
               {system.root.logs(), "getdents64:error=EIO:when=2+2"});
    const std::string others = system.root.log("beta", "19990301");
    marchLog().save(others);
    EXPECT_EQ(system
                  .run({"-d", "-o", others, "alpha"},
                       {.failing = {system.root.logs(), "getdents64:error=EIO:when=1"}})
                  .status,
              30)
        << "the report could be a log";
    EXPECT_EQ(readFile(others), marchLog().bytes());
    fs::remove(others);
    system.save("19990228.being-deleted", marchLog());
    expectEach("the log alpha.19990228.being-deleted is being deleted, or was left by a run that ended.", 0,
               whole, {});
    EXPECT_EQ(system.run({"-d", "-e", "19990228", "alpha"}).err, "") << "the log was renamed back";
    system.save("current", marchLog());
    setChanged(system.log("current"), 920289600); // at noon of 1 March
    const ToolResult result = system.run({"alpha"}, kJson);
    EXPECT_NE(result.err.find(" have the same date: one of them may be reported twice"), result.err.npos);
    EXPECT_EQ(result.status, 6);
    EXPECT_TRUE(result.out.ends_with(whole + endLine("alpha.current", 0, false))) << result.out;
    EXPECT_EQ(system.run({"alpha"}, {.program = QVLEDGER_CHECK_BINARY}).err, "") << "both are checked";
    EXPECT_EQ(system.run({"-g", "alpha"}).out, "march\nmarch\n");
    EXPECT_EQ(system.run({"-s", "19990302", "alpha"}).err, "There are no accounting logs available.\n");
    // For a log of today, the current log is read, even if it is of another day.
    fs::rename(system.log("19990301"), system.log("19990302"));
    char today[9];
    const std::time_t now = std::time(nullptr);
    std::strftime(today, sizeof today, "%Y%m%d", std::gmtime(&now));
    system.save(today, marchLog());
    for (const char *program : {QVLEDGER_JSON_BINARY, QVLEDGER_SUM_BINARY}) {
        const ToolResult unread = system.run({"alpha"}, {.program = program});
        EXPECT_EQ(unread.status, 6) << unread.err;
        EXPECT_NE(unread.out.find(std::string("alpha.") + today), unread.out.npos) << unread.out;
    }
}
