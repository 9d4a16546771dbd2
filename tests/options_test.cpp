#include <gtest/gtest.h>

#include "tests/support/run_tool.h"
#include "tests/support/scripted_os.h"
#include "tool/run.h"

static const char *const kUsage = "Command line usage: qvledger [-h] [-V] [-d] [-a] [-g] [-o <filename>]\n"
                                  "   [-s <start date>]\n"
                                  "   [-e <end date>] [-p <path>]\n"
                                  "   [-O <path>] serverName\n";

TEST(Options, HelpVersionAndUsageErrorsEndTheRunAtOnce) {
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char *out, *err;
    };
    PrintSystem system;
    for (const Case &c : {
             Case{{"-h"}, 0, "", kUsage},
             {{"-V", "-x"}, 0, "1.2-06\n", ""},
             {{"-x", "alpha"}, 1, "", kUsage},
             {{"alpha", "beta", "-\x1b[1mü\xc2\x9b\n", "-x"},
              29,
              "",
              "qvledger: -\\x1B[1mü\\xC2\\x9B\\x0A is ignored: options come before the name of the server.\n"
              "Unable to find the accounting logs for server alpha.\n"},
             {{}, 1, "", kUsage},
             {{"-o"}, 1, "", kUsage},
             {{"--", "-h"}, 29, "", "Unable to find the accounting logs for server -h.\n"},
         }) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const ToolResult result = system.run(c.arguments);
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out, c.out);
        EXPECT_EQ(result.err, c.err);
    }
}

TEST(Options, AnUnsuitableSystemIsReportedOnceBeforeARun) {
    const Scripted page(script::GetACP, [] { return 1252U; });
    const Scripted zones(script::OS_KnowsZone, [](const char *) { return 0; });
    setenv("TZ", "Europe/Berlin", 1);
    const auto messagesOf = [](const qvledger::Options &options) {
        testing::internal::CaptureStderr();
        qvledger::run(options);
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(messagesOf({.helpflg = 1}), kUsage);
    EXPECT_EQ(messagesOf({}), kUsage);
    EXPECT_EQ(
        messagesOf({.serverName = "alpha", .startDate = "x"}),
        "qvledger: texts beyond ASCII may be wrong, because the system's code page is 1252 instead of UTF-8: "
        "Windows 10 version 1903, Windows Server 2022 or a later release is needed.\n"
        "qvledger: the time zone Europe/Berlin is not known here: the system's time zone is used.\n"
        "Unable to process the environment variables during initialization \n"
        "or the server name is invalid.\n");
    EXPECT_EQ(std::getenv("TZ"), nullptr);
}

TEST(Options, InvalidDatesAreReportedAndTheLastOfRepeatedOptionsApplies) {
    const std::string longDate(5000, 'x'),
        longError = "The start date " + longDate + " is invalid.  The correct format is YYYYMMDD.\n";
    PrintSystem system;
    system.save("19990301", marchLog());
    struct Case {
        const char *option, *date, *err; // err is null for a valid date
    };
    for (const Case &c : {
             Case{"-s", longDate.c_str(), longError.c_str()},
             {"-s", "19990229", "The day 29 specified from the date 19990229 is invalid.\n"},
             {"-s", "20000229", nullptr},
             {"-e", "19000229", "The day 29 specified from the date 19000229 is invalid.\n"},
             {"-s", "19990100", "The day 0 specified from the date 19990100 is invalid.\n"},
             {"-s", "1999013", "The start date 1999013 is invalid.  The correct format is YYYYMMDD.\n"},
             {"-s", "", "The start date  is invalid.  The correct format is YYYYMMDD.\n"},
             {"-e", "%s%n0101", "The end date %s%n0101 is invalid.  The correct format is YYYYMMDD.\n"},
             {"-s", "19990101x", nullptr},
         }) {
        SCOPED_TRACE(std::string(c.option) + " " + c.date);
        const ToolResult result = system.run({c.option, c.date, "alpha"});
        EXPECT_EQ(result.status == 30, c.err != nullptr);
        EXPECT_TRUE(c.err == nullptr || (result.err == c.err && result.out.empty())) << result.err;
    }
    const std::vector<std::string> repeated = {"-p", "/nonexistent",     "-s",    "x",    "-s", "19990301",
                                               "-p", system.root.logs(), "alpha", "beta", "-x"};
    EXPECT_EQ(system.run(repeated).out, "job-name\nmarch\n");
}
