// qvledger-json: its lines, its escapes, its ends.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include "samples/sample_oids.h"
#include "tests/support/run_tool.h"

using namespace samples;
namespace fs = std::filesystem;

static const ToolRun kJson{.program = QVLEDGER_JSON_BINARY};

TEST(Json, EveryTextSurvivesItsEscaping) {
    struct Case {
        const char *label, *text, *json;
    };
    const Case cases[] = {
        {"signs with a meaning", R"(a"b\c/)", R"(a\"b\\c/)"},
        {"controls", "\b\f\n\r\t\x01\x1f\x7f", "\\b\\f\\n\\r\\t\\u0001\\u001f\x7f"},
        {"UTF-8 of each length", "ü€\U0001F5A8", "ü€\U0001F5A8"},
        {"edges of UTF-8", "\xEE\x80\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF",
         "\xEE\x80\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF"},
        {"stray bytes", "a\x80z\xFF", "a\uFFFDz\uFFFD"},
        {"cut characters", "\xE2\x82z\xC3", "\uFFFD\uFFFDz\uFFFD"},
        {"more bytes than needed", "\xC0\x80\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"half a surrogate pair", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"beyond the last character", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    };
    std::vector<std::string> texts;
    std::string values;
    for (const Case &one : cases) {
        texts.emplace_back(one.text);
        values += (values.empty() ? "\"" : ",\"") + std::string(one.json) + '"';
    }
    PrintSystem system;
    system.save("19990301", logOf({jobOf({{"job-name", texts}})}));
    EXPECT_EQ(system.run({"alpha"}, kJson).out,
              "{\"date\":19990301,\"attributes\":{\"job-name\":[" + values + "]},\"documents\":[]}\n");
}

TEST(Json, ALineHoldsAJobAndItsDocumentsAndTellsWhatIsMissing) {
    Job job = jobOf({{"job-name", {"one", "two"}}, {"job-owner", {}}});
    for (const char *name : {"a", "b"}) {
        job.document();
        addTexts(job, {{"document-name", {name}}, {"page-select", {}}});
    }
    Job damaged = jobOf({{"job-name", {"seen"}}});
    damaged.attribute(dotted("job-copies"), INTEGER, {Value("xy")});
    Job damagedBehind = jobOf({{"job-name", {"whole"}}});
    damagedBehind.document().attribute(dotted("job-copies"), INTEGER, {Value("xy")});
    PrintSystem system;
    system.save("19990301", logOf({job}));
    system.save("19990302", logOf({damaged, damagedBehind, jobOf({{"job-name", {"next"}}})}));
    const ToolResult result = system.run({"-s", "19990301", "-e", "19990302", "alpha"}, kJson);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              R"({"date":19990301,"attributes":{"job-name":["one","two"],"job-owner":[""]},"documents":[)"
              R"({"document-name":["a"],"page-select":[""]},{"document-name":["b"],"page-select":[""]}]})"
              "\n"
              R"({"date":19990302,"attributes":{"job-name":["seen"]},"documents":[],"incomplete":true})"
              "\n"
              R"({"date":19990302,"attributes":{"job-name":["whole"]},"documents":[{}],"incomplete":true})"
              "\n"
              R"({"date":19990302,"attributes":{"job-name":["next"]},"documents":[]})"
              "\n");
}

// The same ends as the tool's, but for the usage.
TEST(Json, EndsAsTheToolDoes) {
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
        const ToolResult expected = system.run(arguments);
        const ToolResult result = system.run(arguments, kJson);
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.status, expected.status);
        EXPECT_EQ(result.err, expected.err);
    }
    const std::string usage = "Command line usage: qvledger-json [-h] [-V]\n   [-s <start date>]\n"
                              "   [-e <end date>] [-p <path>]\n   [-O <path>] serverName\n";
    for (const char *option : {"-d", "-a", "-g", "-x", "-s"}) {
        const ToolResult result = system.run({option}, kJson);
        EXPECT_EQ(result.status, 1) << option;
        EXPECT_EQ(result.err, usage) << option;
    }
    EXPECT_EQ(system.run({"-h"}, kJson).status, 0);
    EXPECT_EQ(system.run({"-V"}, kJson).out, system.run({"-V"}).out);
}

TEST(Json, AFullOutputIsToldAndHasItsStatus) {
    PrintSystem system;
    system.save("19990301", logOf({jobOf({{"job-name", {"x"}}})}));
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const ToolResult result = system.run({"alpha"}, {.output = full, .program = QVLEDGER_JSON_BINARY});
    close(full);
    EXPECT_EQ(result.status, 74);
    EXPECT_EQ(result.err,
              "qvledger: the report could not be written to standard output: No space left on device.\n");
    EXPECT_EQ(result.entries, std::vector<std::string>{"the report could not be written: standard output: "
                                                       "No space left on device"});
}
