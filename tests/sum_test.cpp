// qvledger-sum: its sums, its forms, and what it says is missing.
#include <gtest/gtest.h>

#include <fstream>

#include <fcntl.h>

#include "platform/descriptor.h"
#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static const ToolRun kSum{.program = QVLEDGER_SUM_BINARY};
static const std::string kTsvColumns = "jobs\tdocuments\tsheets\tcopies\tcost\tfirst\tlast\n";
static const std::string kNothingMissing = "\nserver\tlog\tfrom\tto\treason\n";

static Job &complete(Job &job, std::int16_t month, std::int16_t day, std::int16_t hour,
                     std::int16_t minute = 0) {
    return job.attribute(dotted("completion-time"), TIME,
                         {Value(pack(samples::Time{
                             .year = 1999, .month = month, .day = day, .hour = hour, .minute = minute}))});
}
static Job officeJob(const char *owner, const char *sheets, std::int16_t hour) {
    Job job = jobOf({{"job-name", {"letter"}}, {"job-owner", {owner}}, {"media-sheets-completed", {sheets}}});
    complete(job, 3, 1, hour).attribute(dotted("job-copies"), INTEGER, {Value(packInt(2))});
    job.document();
    addTexts(job, {{"document-name", {"a"}}});
    return job;
}
static Job order(const char *owner, const char *consumed, const char *cost) {
    return jobOf({{"media-consumed", {consumed}}, {"job-cost", {cost}}, {"job-owner", {owner}}});
}

TEST(Sum, TableAddsJobsOfEveryLayoutAndAlignsByCharacters) {
    PrintSystem system;
    Job two = officeJob("zoë", "1", 9);
    two.document();
    addTexts(two, {{"document-name", {"b"}}});
    system.save("19990301",
                logOf({officeJob("al", "7", 8), order("zoë", "printed:a4:9:8 card:1:1", "3.840000"), two,
                       jobOf({{"job-name", {"nobody's"}}}), jobOf({{"job-owner", {"al"}}}),
                       jobOf({{"media-sheets-completed", {"5"}}, {"job-owner", {"al"}}}),
                       jobOf({{"job-owner", {"al"}}})}));
    const ToolResult result = system.run({"alpha"}, kSum);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "owner  jobs  documents  sheets  copies      cost  first                      last\n"
              "al        4          1      12       2  0.000000  1999-03-01T08:00:00+00:00  "
              "1999-03-01T08:00:00+00:00\n"
              "zoë       2          2      10       2  3.840000  1999-03-01T09:00:00+00:00  "
              "1999-03-01T09:00:00+00:00\n"
              "-         1          0       0       0  0.000000  -                          -\n"
              "total     7          3      22       4  3.840000  1999-03-01T08:00:00+00:00  "
              "1999-03-01T09:00:00+00:00\n"
              "\n"
              "missing: nothing\n");
}

TEST(Sum, GroupsBySeveralKeysSortsAndSumsTheRestAsOthers) {
    PrintSystem system;
    system.save("19990331", logOf({order("b", "x:1", "2"), order("a", "x:4", "1"), order("a", "x:4", "1")}));
    system.save("19990401", logOf({order("b", "x:2", "5.5"), order("c", "x:2", "0.25")}));
    const auto line = [](const char *keys, const char *sums) {
        return std::string(keys) + '\t' + sums + "\t\t\n";
    };
    EXPECT_EQ(system.run({"-f", "tsv", "-b", "month,owner", "-n", "2", "alpha"}, kSum).out,
              "month\towner\t" + kTsvColumns + line("1999-03\ta", "2\t0\t8\t0\t2.000000") +
                  line("1999-04\tb", "1\t0\t2\t0\t5.500000") + line("others\t", "2\t0\t3\t0\t2.250000") +
                  kNothingMissing);
    const std::string byDay = system.run({"-f", "tsv", "-b", "day,server", "-k", "day", "alpha"}, kSum).out;
    EXPECT_EQ(byDay, "day\tserver\t" + kTsvColumns + line("1999-03-31\talpha", "3\t0\t9\t0\t4.000000") +
                         line("1999-04-01\talpha", "2\t0\t4\t0\t5.750000") + kNothingMissing);
    EXPECT_TRUE(system.run({"-f", "tsv", "-k", "cost", "-n", "1", "-s", "19990401", "alpha"}, kSum)
                    .out.starts_with("owner\t" + kTsvColumns + line("b", "1\t0\t2\t0\t5.500000")));
}

TEST(Sum, PrinterIsTheUsedOneOrTheRequestedOne) {
    PrintSystem system;
    system.save("19990301",
                logOf({jobOf({{"printer-name-requested", {"wished"}}, {"printers-used", {"p", "q"}}}),
                       jobOf({{"printers-used", {}}, {"printer-name-requested", {"wished"}}})}));
    EXPECT_EQ(system.run({"-f", "tsv", "-b", "printer", "alpha"}, kSum).out,
              "printer\t" + kTsvColumns +
                  "p q\t1\t0\t0\t0\t0.000000\t\t\nwished\t1\t0\t0\t0\t0.000000\t\t\n" + kNothingMissing);
}

TEST(Sum, SheetsFollowTheDocumentedRuleAndCostsAreExact) {
    const struct {
        const char *label;
        std::vector<NamedTexts> attributes;
        const char *sums; // sheets, copies, cost
        const char *fault;
    } cases[] = {
        {"the last number of each word",
         {{"media-consumed", {"a:b:12:3 c:4", "d:5"}}},
         "12\t0\t0.000000",
         nullptr},
        {"words without a number",
         {{"media-consumed", {"5 a: b:x :6x coloured card:2"}}},
         "2\t0\t0.000000",
         nullptr},
        {"both", {{"media-consumed", {"a:5"}}, {"media-sheets-completed", {"3"}}}, "3\t0\t0.000000", nullptr},
        {"both, one empty",
         {{"media-sheets-completed", {}}, {"media-consumed", {"a:5"}}},
         "5\t0\t0.000000",
         nullptr},
        {"no number", {{"media-sheets-completed", {"many"}}}, "0\t0\t0.000000", "media-sheets-completed"},
        {"a negative number",
         {{"media-sheets-completed", {"-2"}}},
         "0\t0\t0.000000",
         "media-sheets-completed"},
        {"a count beyond 64 bits",
         {{"media-consumed", {"a:99999999999999999999 b:1"}}},
         "1\t0\t0.000000",
         "media-consumed"},
        {"sums beyond 64 bits",
         {{"job-copies", {"9223372036854775807", "9223372036854775807"}}},
         "0\t18446744073709551614\t0.000000",
         nullptr},
        {"tenths", {{"job-cost", {"0.1", "0.2", "0.100000"}}}, "0\t0\t0.400000", nullptr},
        {"what a double cannot add",
         {{"job-cost", {"9007199254.740993", "0.000001"}}},
         "0\t0\t9007199254.740994",
         nullptr},
        {"below zero", {{"job-cost", {"-0.5", "0.499999"}}}, "0\t0\t-0.000001", nullptr},
        {"no values", {{"job-cost", {}}, {"job-copies", {}}}, "0\t0\t0.000000", nullptr},
        {"a comma", {{"job-cost", {"3,84", "1"}}}, "0\t0\t1.000000", "job-cost"},
        {"seven places", {{"job-cost", {"1.0000001"}}}, "0\t0\t0.000000", "job-cost"},
        {"no digits", {{"job-cost", {"-"}}}, "0\t0\t0.000000", "job-cost"},
        {"not finite", {{"job-cost", {"inf"}}}, "0\t0\t0.000000", "job-cost"},
        {"too much", {{"job-cost", {"9223372036855"}}}, "0\t0\t0.000000", "job-cost"},
    };
    PrintSystem system;
    for (const auto &one : cases) {
        system.save("19990301", logOf({jobOf(one.attributes)}));
        const ToolResult result = system.run({"-f", "tsv", "-b", "server", "alpha"}, kSum);
        std::string expected =
            "server\t" + kTsvColumns + "alpha\t1\t0\t" + one.sums + "\t\t\n" + kNothingMissing;
        if (one.fault != nullptr)
            expected += "alpha\talpha.19990301\t1999-03-01\t1999-03-01\tunusable values of " +
                        std::string(one.fault) + ": 1\n";
        EXPECT_EQ(result.out, expected) << one.label;
        EXPECT_EQ(result.status, one.fault != nullptr ? 51 : 0) << one.label;
    }
}

TEST(Sum, TimesAreComparedAcrossTheEndOfSummerTime) {
    Job summer, winter;
    complete(summer, 10, 31, 0, 50); // 02:50 in summer time
    complete(winter, 10, 31, 1, 10); // 02:10 in standard time
    PrintSystem system;
    system.save("19991031", logOf({winter, summer}));
    ToolRun inZone = kSum;
    inZone.environment = {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}};
    EXPECT_NE(system.run({"-f", "tsv", "alpha"}, inZone)
                  .out.find("\t1999-10-31T02:50:00+02:00\t1999-10-31T02:10:00+01:00\n"),
              std::string::npos);
}

TEST(Sum, NamesWhatIsMissingAndDoesNotEndWithStatusZero) {
    const auto missing = [](const std::string &out) { return out.substr(out.find("\n\n") + 2); };
    PrintSystem system;
    system.save("19990227", logOf({order("a", "x:1", "1")}));
    system.save("19990301", logOf({order("a", "x:1", "1")}));
    system.save("19990302", logOf({}));
    EXPECT_EQ(system.run({"-s", "19990301", "-f", "tsv", "alpha"}, kSum).status, 0)
        << "a log without a job is complete";
    const ToolResult gap = system.run({"alpha"}, kSum);
    EXPECT_EQ(gap.status, 51);
    EXPECT_EQ(missing(gap.out), "missing:\n"
                                "server  log  from        to          reason\n"
                                "alpha   -    1999-02-28  1999-02-28  no log of this day\n");

    // A day at the beginning or the end of the range is missing if there are logs before and after it.
    EXPECT_EQ(missing(system.run({"-s", "19990228", "alpha"}, kSum).out), missing(gap.out));
    EXPECT_EQ(missing(system.run({"-e", "19990228", "alpha"}, kSum).out), missing(gap.out));
    EXPECT_EQ(system.run({"-e", "19990227", "alpha"}, kSum).status, 0);

    system.save("19990303", logOf({}, {.accessList = {pack(userEntry("nobody-at-all", "NOWHERE"))}}));
    Job damaged = jobOf({{"job-owner", {"a"}}});
    damaged.attribute(dotted("job-copies"), INTEGER, {Value("xy")});
    addTexts(damaged, {{"media-consumed", {"x:8"}}});
    system.save("19990306", logOf({damaged}));
    std::ofstream(system.log("19990306"), std::ios::app) << "cut";
    const ToolResult result = system.run({"-f", "json", "-s", "19990302", "alpha", "none"}, kSum);
    EXPECT_EQ(result.status, 7) << result.err;
    EXPECT_EQ(
        result.out,
        R"({"servers":["alpha","none"],"from":"1999-03-02","to":"1999-03-06",)"
        "\n\"groups\":[\n"
        R"({"by":{"owner":"a"},"jobs":1,"documents":0,"sheets":8,"copies":0,"cost":0.000000,"first":null,"last":null}],)"
        "\n\"others\":null,\n"
        R"("total":{"jobs":1,"documents":0,"sheets":8,"copies":0,"cost":0.000000,"first":null,"last":null},)"
        "\n\"missing\":[\n"
        R"({"server":"alpha","log":"alpha.19990303","from":"1999-03-03","to":"1999-03-03","reason":"cannot be opened"},)"
        "\n"
        R"({"server":"alpha","log":null,"from":"1999-03-04","to":"1999-03-05","reason":"no logs of these days"},)"
        "\n"
        R"({"server":"alpha","log":"alpha.19990306","from":"1999-03-06","to":"1999-03-06","reason":"damaged records, not counted in full: 1"},)"
        "\n"
        R"({"server":"alpha","log":"alpha.19990306","from":"1999-03-06","to":"1999-03-06","reason":"cannot be read after record 1"},)"
        "\n"
        R"({"server":"none","log":null,"from":null,"to":null,"reason":"no log was read"}]})"
        "\n");
    EXPECT_EQ(system.run({"-s", "19990306", "alpha"}, kSum).status, 14) << "the damaged record came first";
}

TEST(Sum, LogsOfOneDateAreSummedOnce) {
    PrintSystem system;
    system.save("20010203", logOf({order("a", "x:1", "1")}));
    system.save("current", logOf({order("a", "x:2", "1")}));
    setChanged(system.log("current"), 981'158'400); // 2001-02-03
    const ToolResult result = system.run({"-f", "tsv", "alpha"}, kSum);
    EXPECT_EQ(result.status, 6);
    EXPECT_NE(result.out.find("\na\t1\t"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("another log was read for this date"), std::string::npos) << result.out;
}

TEST(Sum, EveryFormEscapesTexts) {
    PrintSystem system;
    system.save("19990301", logOf({order("<i>&\"\t\\\x80", "x:1", "1")}));
    const auto has = [&](const char *form, const char *part) {
        const std::string out = system.run({"-f", form, "alpha"}, kSum).out;
        EXPECT_NE(out.find(part), std::string::npos) << out;
        return out;
    };
    has("table", "\n<i>&\"\\x09\\\uFFFD  ");
    has("tsv", "\n<i>&\"\\x09\\\uFFFD\t1\t");
    has("json", R"({"owner":"<i>&\"\u0009\\)"
                "\uFFFD\"}");
    const std::string page =
        has("html", "<tr><td>&lt;i&gt;&amp;&quot;\\x09\\\uFFFD</td><td class=\"number\">1</td>");
    EXPECT_NE(page.find("<p>Nothing is missing.</p>"), std::string::npos);
    for (const char *part : {"<script", "http:", "https:", "src=", "url("})
        EXPECT_EQ(page.find(part), std::string::npos) << part;
    system.save("19990303", logOf({}));
    has("html", "<p class=\"warn\">These sums may be incomplete");
    has("html", "<td>alpha</td><td>-</td><td>1999-03-02</td><td>1999-03-02</td><td>no log of this day</td>");
}

// Returns what a browser makes of a page, and its log.
static std::string browse(const fs::path &page, const fs::path &profile) {
    const std::string command =
        "timeout 90 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
        "--disable-background-networking --disable-component-update --disable-sync --enable-logging=stderr "
        "--dump-dom --user-data-dir='" +
        profile.string() + "' 'file://" + page.string() + "' 2>&1";
    FILE *const browser = popen(command.c_str(), "r");
    if (browser == nullptr)
        throw std::runtime_error("no shell");
    std::string output = readAll(fileno(browser));
    EXPECT_EQ(pclose(browser), 0) << output;
    return output;
}

TEST(Sum, ABrowserShowsThePageWithoutComplaint) {
    if (std::system("command -v chromium >/dev/null") != 0)
        GTEST_SKIP() << "no chromium";
    PrintSystem system;
    system.save("19990301", logOf({order("<script>x()</script>", "x:1234567", "1"), order("a", "x:1", "1")}));
    system.save("19990303", logOf({}));
    const fs::path page = system / "page.html";
    std::string html = system.run({"-f", "html", "alpha"}, kSum).out;
    writeFile(page, html);
    const std::string shown = browse(page, system / "profile");
    for (const char *part :
         {"<tr><td>&lt;script&gt;x()&lt;/script&gt;</td><td class=\"number\">1</td>",
          "<td class=\"number\">1\u202F234\u202F567</td>", "<tr><td colspan=\"1\">total</td>",
          "<td class=\"number\">1\u202F234\u202F568</td>", "<td>no log of this day</td>"})
        EXPECT_NE(shown.find(part), std::string::npos) << part << "\n" << shown;
    EXPECT_EQ(shown.find(":CONSOLE"), std::string::npos) << shown;
    // The page's policy forbids files and scripts from elsewhere, so the browser reports them.
    writeFile(page, html.replace(html.find("</body>"), 0, "<img src=\"x.png\">"));
    EXPECT_NE(browse(page, system / "profile").find(":CONSOLE"), std::string::npos);
}

TEST(Sum, ArgumentsAreCheckedAndLostOutputShows) {
    PrintSystem system;
    system.save("19990301", logOf({order("a", "x:1", "1")}));
    for (const std::vector<std::string> &bad :
         std::vector<std::vector<std::string>>{{"-b", ""},
                                               {"-b", "owner,"},
                                               {"-b", "owner,owner"},
                                               {"-k", "first-completion"},
                                               {"-n", "0"},
                                               {"-n", "2x"},
                                               {"-f", "xml"}}) {
        const ToolResult result = system.run({bad[0], bad[1], "alpha"}, kSum);
        EXPECT_EQ(result.status, 1) << bad[0] << bad[1];
        EXPECT_EQ(result.err,
                  "qvledger-sum: the option " + bad[0] + " does not accept \"" + bad[1] + "\".\n");
        EXPECT_EQ(result.out, "") << bad[0] << bad[1];
    }
    EXPECT_EQ(system.run({"alpha", "alpha"}, kSum).status, 1) << "its jobs would be counted twice";
    EXPECT_EQ(system.run({"--version"}, kSum).out, system.run({"-V"}).out);
    EXPECT_TRUE(system.run({"--help"}, kSum).err.starts_with("Command line usage: qvledger-sum "));
    const qvledger::Descriptor full(::open("/dev/full", O_WRONLY));
    ToolRun lost = kSum;
    lost.output = full.get();
    EXPECT_EQ(system.run({"alpha"}, lost).status, 74);
}
