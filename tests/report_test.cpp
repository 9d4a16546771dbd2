#include <gtest/gtest.h>

#include <cctype>
#include <regex>
#include <sstream>

#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"

using namespace samples;

// Returns the record of a letter: "a" and "b" differ in a name, "c" is "a" with a document.
static Job recordOf(char kind) {
    Job job = jobOf({{"job-identifier", {"1"}}, {kind == 'b' ? "job-owner" : "job-name", {"2"}}});
    if (kind == 'c')
        addTexts(job.document(), {{"document-name", {"3"}}});
    return job;
}

// Returns the line of a letter: capital letters are headers, small letters are values.
static std::string lineOf(char kind, bool documents) {
    const bool header = std::isupper(kind) != 0;
    std::string line = header ? "job-identifier\tjob-" : "1\t2";
    if (header)
        line += kind == 'B' ? "owner" : "name";
    if (documents && std::tolower(kind) == 'c')
        line += header ? "\tdocument-name" : "\t3";
    return line + '\n';
}

TEST(Report, AHeaderIsWrittenWheneverTheNamesChange) {
    struct Case {
        const char *label;
        std::vector<const char *> logs; // letters of the records; "!" is a cut record
        const char *options, *lines;
    };
    for (const Case &c : {
             Case{"same names", {"aa"}, "--", "Aaa"},
             {"changing names", {"abba"}, "--", "AaBbbAa"},
             {"recurring names", {"aabbaab"}, "--", "AaaBbbAaaBb"},
             {"recurring documents", {"ccaacc"}, "-a", "CccAaaCcc"},
             {"A, B, A across logs", {"a", "b", "a"}, "--", "AaBbAa"},
             {"only the last record of a log matters to the next", {"ab", "b"}, "--", "AaBbb"},
             {"failed log does not pass its names on", {"a", "a!", "a"}, "--", "AaaAa"},
             {"log without a record keeps the names", {"a", "", "a"}, "--", "Aaa"},
             {"documents without -a", {"ac", "a"}, "--", "Aaca"},
             {"documents with -a", {"acc", "a"}, "-a", "AaCccAa"},
             {"no headers", {"ab", "a"}, "-g", "aba"},
         }) {
        SCOPED_TRACE(c.label);
        PrintSystem system;
        std::string tail = "19990301";
        for (const char *records : c.logs) {
            Log log;
            for (const char *kind = records; *kind != '\0'; ++kind)
                *kind == '!' ? log.raw("cut") : log.job(recordOf(*kind));
            system.save(tail, log);
            ++tail.back();
        }
        std::string expected;
        for (const char *kind = c.lines; *kind != '\0'; ++kind)
            expected += lineOf(*kind, std::string(c.options) == "-a");
        EXPECT_EQ(system.run({c.options, "alpha"}).out, expected);
    }
}

TEST(Report, DocumentsFollowTheJobUnderOptionA) {
    Job first = jobOf({{"job-identifier", {"1"}}, {"job-name", {"x", "y"}}, {"job-owner", {}}});
    addTexts(first.document(), {{"document-name", {"p"}}, {"document-format", {"q"}}});
    addTexts(first.document(), {{"document-name", {"r"}}, {"document-format", {"s", "t"}}});
    Job oneAttribute = jobOf({{"job-identifier", {"3"}}});
    addTexts(oneAttribute.document(), {{"document-name", {"k"}}});
    addTexts(oneAttribute.document(), {{"document-name", {"l"}}});

    PrintSystem system;
    system.save("19990301", logOf({first, oneAttribute}));
    EXPECT_EQ(system.run({"-a", "alpha"}).out,
              "job-identifier\tjob-name\tjob-owner\tdocument-name\tdocument-format\n"
              "1\tx y\t\tp\tq\n"
              "\t\t\tr\ts t\n"
              "job-identifier\tdocument-name\n"
              "3\tk\n"
              "\tl\n");
    EXPECT_EQ(system.run({"alpha"}).out,
              "job-identifier\tjob-name\tjob-owner\n1\tx y\t\njob-identifier\n3\n");
}

TEST(Report, BytesOfValuesAreNotChanged) {
    PrintSystem system;
    const std::string odd = "100%s %n\ttab\nline \xC3\xA9\xFF\"\\";
    system.save("19990301",
                logOf({jobOf({{"job-name", {odd, "", odd}}, {"job-owner", {std::string(100000, 'x')}}}),
                       jobOf({{"job-name", {}}, {"job-owner", {}}})}));
    EXPECT_EQ(system.run({"-g", "alpha"}).out, odd + "  " + odd + "\t" + std::string(100000, 'x') + "\n\t\n");
}

// Logs of version 2 do not say which attributes belong to the job.
TEST(Report, OldLogsHaveOneHeaderAndOnlyFirstAttributes) {
    PrintSystem system;
    const Log old = logOf({recordOf('a'), recordOf('b')}, {.verNum = 2});
    system.save("19990301", old);
    system.save("19990302", old);
    for (const std::vector<std::string> &arguments : {std::vector<std::string>{"alpha"}, {"-a", "alpha"}})
        EXPECT_EQ(system.run(arguments).out, "job-identifier\n1\n1\njob-identifier\n1\n1\n") << arguments[0];
}

TEST(Report, FailuresInsideALogAreReportedWithoutChangingTheStatus) {
    const std::string name = dotted("job-name"), owner = dotted("job-owner"),
                      document = dotted("document-name");
    const Job good = jobOf({{"job-name", {"n"}}, {"job-owner", {"o"}}});
    const Job badFirst =
        Job().attribute(name, STRING, {kUnreadable}).attribute(owner, STRING, {packString("o")});
    const Job badSecond = jobOf({{"job-name", {"n"}}}).attribute(owner, STRING, {kUnreadable});
    const Job unknown = Job().attribute("1.2.3.4", STRING, {packString("n")});
    Job documents = jobOf({{"job-name", {"n"}}, {"job-owner", {"o"}}});
    documents.document().attribute(document, STRING, {kUnreadable});
    addTexts(documents.document(), {{"document-name", {"d"}}});
    documents.document().attribute(document, STRING, {kUnreadable});
    addTexts(documents.document(), {{"document-name", {"never reached"}}});
    const std::string internal = "qvledger internal error: ", unreadable = "unable to read record: ";
    const std::string corrupted =
        "Unable to read accounting information because the data appears to be corrupted.\n";
    const std::string oidProblem = "A problem has been encountered using the OID database.\n";
    const std::string oidError = "Object Identifier Database (OID) error.",
                      formatError = "internal data format error.";
    const std::string notRead = "Unable to read the accounting file.\n",
                      report = "job-name\tjob-owner\nn\to\n";
    const auto expectReport = [](const char *label, const Log &log, const std::string &out,
                                 const std::string &err, const std::vector<std::string> &entries) {
        SCOPED_TRACE(label);
        PrintSystem system;
        system.save("19990301", log);
        const ToolResult result = system.run({"-a", "alpha"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out, out);
        EXPECT_EQ(result.err, err);
        EXPECT_EQ(result.entries, entries);
    };
    expectReport("no record", Log(), "", notRead, {internal + "unable to read Accounting log file."});
    expectReport("unknown attribute in the first record", logOf({unknown, good}), "", oidProblem,
                 {internal + oidError});
    expectReport("unknown attribute in a later record", logOf({good, unknown, good}), report, oidProblem,
                 {internal + oidError});
    expectReport("record cut short", Log(logOf({good})).raw(std::string("\0\0\0\1\0", 5)), report, notRead,
                 {internal + "unable to read Accounting log file."});
    expectReport("record count of zero", Log(logOf({good})).raw(std::string(4, '\0')), report,
                 "Unable to process data due to an unknown error.\n", {internal + "unknown error."});
    expectReport("first attribute unreadable", logOf({good, badFirst, good}), report + "n\to\n", corrupted,
                 {unreadable + formatError});
    expectReport("later attribute unreadable", logOf({good, badSecond, good}), report + "n\nn\to\n",
                 corrupted, {internal + formatError});
    expectReport("first attribute unreadable, in header and values", logOf({badFirst, good}), "n\to\n",
                 corrupted + corrupted,
                 {unreadable + formatError, "repeated 1 times: " + unreadable + formatError});
    expectReport("unreadable documents", logOf({documents, good}),
                 "job-name\tjob-owner\nn\to\n\t\td\n\t\n" + report, "", {});
}

TEST(Report, DocumentedLogGivesTheDocumentedReport) {
    std::istringstream document(readFile(QVLEDGER_DOCUMENTS "/formats.md"));
    std::string line, log, report;
    while (std::getline(document, line) && !line.starts_with("Example: "))
        ;
    while (std::getline(document, line) && !line.starts_with("Its report")) {
        static const std::regex item(R"re("([^"]*)"|([0-9a-f]{2})(\*(\d+))?)re"); // a text or byte*count
        const std::string bytes = line.starts_with("    ") ? line.substr(0, line.find(';')) : "";
        for (std::sregex_iterator it(bytes.begin(), bytes.end(), item), end; it != end; ++it)
            log += (*it)[1].matched ? (*it)[1].str()
                                    : std::string((*it)[3].matched ? std::stoul((*it)[4]) : 1,
                                                  static_cast<char>(std::stoi((*it)[2], nullptr, 16)));
    }
    while (std::getline(document, line) && !line.starts_with("#"))
        report += line.starts_with("    ") ? line.substr(4) + '\n' : "";
    PrintSystem system;
    writeFile(system.log("19990301"), log);
    EXPECT_EQ(system.run({"alpha"}).out, report);
    EXPECT_NE(report, "");
}
