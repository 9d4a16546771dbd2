// Formatted output, and message catalogues that replace the default texts.
#include <cstdlib>

#include <gtest/gtest.h>

#include "service/messages/message.h"
#include "tests/support/run_tool.h"

namespace fs = std::filesystem;

TEST(Message, FormatsFollowPrintf) {
    char text[16];
    std::int32_t (*const format)(char *, const char *, ...) =
        MSG_sprintf; // a pointer, because the compiler would check a direct call's format
    EXPECT_EQ(format(text, "%%%3$s%1$03d%2$.2f", 8, 1.5, "z"), 9);
    EXPECT_STREQ(text, "%z0081.50");
    for (const char *wrong : {"%2$s", "%1$s%1$d", "%1$s%s", "%1$n", "%1$"}) // would misuse the arguments
        EXPECT_LT(format(text, wrong, "a", "b"), 0) << wrong;
}

TEST(Catalogue, ItsTextsReplaceTheDefaultTexts) {
    PrintSystem system;
    samples::writeFile(system / "texts", "$set 59\n$quote \"\n"
                                         "110 \"Aufruf: qvledger SERVER\\n\"\n"
                                         "108 \"Im Datum %2$s gibt es keinen Monat %1$d.\\n\"\n"
                                         "109 \"Im Datum %2$s gibt es 100%% den Tag nicht.\\n\"\n"
                                         "106 \"Falscher Anfang.\\n\"\n107 \"Nicht %1$d.\\n\"\n"
                                         "111 \"Keine Datei %1$\"\n$set 60\n21 \"%1$s: zu sp\u00E4t\"\n");
    const std::string command =
        "gencat '" + (system / "qvledg.cat").string() + "' '" + (system / "texts").string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const ToolRun translated{.environment = {{"NLSPATH", system / "%N.cat"}}};
    EXPECT_EQ(system.run({"-h"}, translated).err, "Aufruf: qvledger SERVER\n");
    EXPECT_EQ(system.run({"-s", "19991301", "alpha"}, translated).err,
              "Im Datum 19991301 gibt es keinen Monat 13.\n");
    EXPECT_EQ(system.run({"-s", "19990100", "alpha"}, translated).err,
              "Im Datum 19990100 gibt es 100% den Tag nicht.\n");
    EXPECT_EQ(system.run({"-s", "1999", "alpha"}, translated).err, "Falscher Anfang.\n");
    EXPECT_TRUE(system.run({"-e", "1999", "alpha"}, translated).err.starts_with("The end date 1999 is"))
        << "a number instead of a text";
    EXPECT_TRUE(system.run({"-o", system / "none/report", "alpha"}, translated).err.starts_with("Unable to"))
        << "an incomplete placeholder";
    EXPECT_TRUE(system.run({"alpha", "-s"}, translated).err.starts_with("qvledger: -s: zu sp\u00E4t\n"))
        << "the catalogue's text has no line end";
    const ToolRun german{.environment = {{"NLSPATH", QVLEDGER_CATALOGUES "/de/%N.cat"}}};
    EXPECT_TRUE(system.run({"-h"}, german).err.starts_with("Aufruf: qvledger [-h] "));
    EXPECT_EQ(system.run({"-s", "19991301", "alpha"}, german).err,
              "Der Monat 13 im Datum 19991301 ist ung\u00FCltig.\n");
}

TEST(Catalogue, TheInstalledOneIsUsedWithoutNlspath) {
    PrintSystem system;
    fs::path place = QVLEDGER_LOCALEDIR;
    while (!fs::exists(place))
        place = place.parent_path();
    const fs::path laid = system / "laid" / fs::relative(QVLEDGER_LOCALEDIR, place) / "C/LC_MESSAGES";
    fs::create_directories(laid);
    fs::copy_file(QVLEDGER_CATALOGUES "/de/qvledg.cat", laid / "qvledg");
    const ToolResult result =
        system.run({"-h"}, {.environment = {{"LC_ALL", "C.UTF-8"}}, .mounted = {system / "laid", place}});
    if (result.status == kNoNamespace)
        GTEST_SKIP() << "needs a mount namespace";
    EXPECT_TRUE(result.err.starts_with("Aufruf: qvledger [-h] ")) << result.err;
}

TEST(Catalogue, TextsAreConvertedToTheLocalesCharacterSet) {
    const std::pair<const char *, const char *> cases[] = {{"de_DE.ISO-8859-1", "ung\xFCltig"},
                                                           {"ja_JP.EUC-JP", "\xC6\xFC\xC9\xD5"}};
    PrintSystem system;
    for (const auto &[locale, expected] : cases) {
        const std::string name = locale, dot = name.substr(0, name.find('.'));
        const std::string command = "localedef -i " + dot + " -f " + name.substr(dot.size() + 1) + " '" +
                                    (system / name).string() + "' 2>&1";
        if (std::system(command.c_str()) != 0)
            GTEST_SKIP() << "the sources of locales are not installed";
        const ToolResult result = system.run(
            {"-s", "19991301", "alpha"},
            {.environment = {
                 {"LOCPATH", system / ""}, {"LC_ALL", name}, {"NLSPATH", QVLEDGER_CATALOGUES "/%l/%N.cat"}}});
        EXPECT_NE(result.err.find(expected), std::string::npos) << name << ": " << result.err;
        EXPECT_NE(result.err.find("19991301"), std::string::npos) << result.err;
    }
}
