#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "service/log_internal.h"
#include "service/oid.h"

using Bytes = std::basic_string<std::uint8_t>;

// ---- Dotted decimal into binary ----

static Bytes binaryOf(const std::string &in_decimal) {
    std::uint8_t binary[OID_BINARY_SIZE];
    if (OID_ConvertDecToBin(nullptr, in_decimal.c_str(), binary, 0) != 0)
        return {};
    return {binary, binary + 1 + binary[0]};
}

TEST(OidBinary, ArcsBecomeContentsOctets) {
    struct Case {
        const char *decimal;
        Bytes binary;
    };
    const Case cases[] = {
        {"0.0", {1, 0}},
        {"1.39", {1, 79}},
        {"2.47", {1, 127}},
        {"2.48", {2, 0x81, 0x00}},
        {"2.999.3", {3, 0x88, 0x37, 0x03}},
        {"1.0.10175.1.127.128", {7, 0x28, 0xCF, 0x3F, 0x01, 0x7F, 0x81, 0x00}},
        {"1.2.4294967296", {6, 0x2A, 0x90, 0x80, 0x80, 0x80, 0x00}},
        {"1.2.18446744073709551616", {11, 0x2A, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}},
    };
    for (const Case &row : cases)
        EXPECT_EQ(binaryOf(row.decimal), row.binary) << row.decimal;
}

TEST(OidBinary, RefusedTextLeavesTheBuffer) {
    const char *texts[] = {"",     "1",    "3.1",    "1.40", "0.40", "1.",      ".1",   "1..2",
                           "1.02", "01.2", "1.2.a",  "1.2 ", " 1.2", "1.-2",    "+1.2", "1.2.",
                           "1,2",  "10.1", "1.2.00", "2",    "2.",   "1.2.\xB2"};
    for (const char *text : texts) {
        std::uint8_t binary[OID_BINARY_SIZE] = {9, 9};
        EXPECT_EQ(OID_ConvertDecToBin(nullptr, text, binary, 0), OID_E_SYNTAX) << text;
        EXPECT_EQ(binary[0], 9) << text;
    }
}

TEST(OidBinary, SeventyTwoContentsOctetsAreTheMost) {
    std::string decimal = "1.2";
    for (int arc = 1; arc < OID_BINARY_SIZE - 1; ++arc)
        decimal += ".5";
    EXPECT_EQ(binaryOf(decimal).size(), static_cast<std::size_t>(OID_BINARY_SIZE));
    EXPECT_TRUE(binaryOf(decimal + ".5").empty());
    EXPECT_FALSE(binaryOf("1.2.1" + std::string(149, '0')).empty()); // 10^149 < 2^(7 * 71)
    EXPECT_TRUE(binaryOf("1.2.1" + std::string(150, '0')).empty());
    EXPECT_TRUE(binaryOf("1.2." + std::string(100000, '9')).empty());
}

// ---- The database ----

class OidDatabase : public ::testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/oidXXXXXX";
        folder = mkdtemp(name);
        setenv("QV_LOG", (folder + "/log").c_str(), 1);
        LOG__Reset();
        OID_Init(nullptr, folder.c_str(), 0);
    }
    void TearDown() override {
        if (handle != nullptr)
            OID_CloseDb(nullptr, &handle);
        OID_Term();
        unsetenv("QV_LOG");
        LOG__Reset();
        std::filesystem::remove_all(folder);
    }

    void write(const std::string &in_file, const std::string &in_text) const {
        std::ofstream(folder + "/" + in_file, std::ios::binary) << in_text;
    }
    std::int32_t open() { return OID_OpenDb(nullptr, folder.c_str(), 0, 0, &handle); }
    std::int32_t setLocale(std::string in_locale) {
        char *text = in_locale.data();
        return OID_SetLocale(nullptr, &handle, &text);
    }
    std::string nameOf(const std::string &in_decimal) {
        char name[OID_NAME_SIZE] = "";
        const bool known = OID_LookupBinary(nullptr, handle, binaryOf(in_decimal).c_str(), name, 0) == 0;
        return known ? name : "unknown";
    }
    std::string nameOf(AS_attrID_t in_identifier) {
        char name[OID_NAME_SIZE] = "";
        return OID_LookupShort(nullptr, handle, in_identifier, name, nullptr) == 0 ? name : "unknown";
    }
    // What the log got since the last call.
    std::string takeLog() const {
        std::ifstream in(folder + "/log");
        const std::string log{std::istreambuf_iterator<char>(in), {}};
        std::filesystem::resize_file(folder + "/log", 0);
        return log;
    }

    std::string folder;
    void *handle = nullptr;
};

TEST_F(OidDatabase, NamesAreFoundByBothKeys) {
    const std::string longName = std::string(253, 'x') + "\xC3\xA4";
    write("oids", "# a table\n\n \t\n1.2.3\t7\t40\tjob-name\r\n1.2.4\t0\t00\tno short one\n"
                  "1.2.5\t4294967295\tfF\t" +
                      longName); // and no newline at the end
    ASSERT_EQ(open(), 0) << takeLog();
    EXPECT_EQ(nameOf("1.2.3"), "job-name");
    EXPECT_EQ(nameOf(7), "job-name");
    EXPECT_EQ(nameOf("1.2.4"), "no short one");
    EXPECT_EQ(nameOf(0), "unknown");
    EXPECT_EQ(nameOf("1.2.6"), "unknown");
    EXPECT_EQ(nameOf("1.2"), "unknown");

    char name[OID_NAME_SIZE];
    Bytes classes(OID_CLASS_SIZE, 0xEE);
    ASSERT_EQ(OID_LookupShort(nullptr, handle, 4294967295U, name, classes.data()), 0);
    EXPECT_EQ(name, longName);
    EXPECT_EQ(classes, Bytes(1, 0) + Bytes(1, 0xFF) + Bytes(OID_CLASS_SIZE - 2, 0));
}

TEST_F(OidDatabase, EveryEntryOfALargeTableIsFound) {
    constexpr AS_attrID_t kEntries = 20000;
    std::string text = "#" + std::string(40000, 'c') + "\n"; // a line beyond any block
    for (AS_attrID_t at = 1; at <= kEntries; ++at) {
        const std::string number = std::to_string(at);
        text.append("1.0.10175.")
            .append(number)
            .append("\t")
            .append(number)
            .append("\t40\tn")
            .append(number + "\n");
    }
    write("oids", text);
    ASSERT_EQ(open(), 0) << takeLog();
    for (AS_attrID_t at = 1; at <= kEntries; ++at) {
        ASSERT_EQ(nameOf(at), "n" + std::to_string(at));
        ASSERT_EQ(nameOf("1.0.10175." + std::to_string(at)), "n" + std::to_string(at));
    }
    EXPECT_EQ(nameOf(kEntries + 1), "unknown");
}

TEST_F(OidDatabase, MalformedTableNamesItsLineInTheLog) {
    const char *plain[] = {"1.2.4\t8\t40",
                           "1.2.4\t8\t40\tn\t",
                           "1.2.4\t\t8\t40\tn",
                           "1.2.4 8 40 n",
                           "1.2.4.\t8\t40\tn",
                           "1.2.4\t\t40\tn",
                           "1.2.4\t4294967296\t40\tn",
                           "1.2.4\t-1\t40\tn",
                           "1.2.4\t8x\t40\tn",
                           "1.2.4\t8\t4\tn",
                           "1.2.4\t8\t4g\tn",
                           "1.2.4\t8\t40\t",
                           "1.2.4\t8\t40\t\xE4",
                           "1.2.4\t8\t40\t\xED\xA0\x80",
                           "1.2.4\t8\t40\t\xC0\xAF",
                           "1.2.3\t8\t40\tsame OID",
                           "1.2.4\t7\t40\tsame"};
    std::vector<std::string> lines(std::begin(plain), std::end(plain));
    lines.emplace_back("1.2.4\t8\t40\ta\0b", 14);
    lines.push_back("1.2.4\t8\t40\t" + std::string(256, 'x'));
    for (const std::string &line : lines) {
        write("oids", "# comment\n1.2.3\t7\t40\tname\n" + line + "\r\n");
        EXPECT_EQ(open(), OID_E_DATABASE) << line;
        EXPECT_EQ(handle, nullptr) << line;
        EXPECT_NE(takeLog().find(folder + "/oids:3: "), std::string::npos) << line;
    }
}

TEST_F(OidDatabase, WithoutATableNothingOpens) {
    EXPECT_EQ(open(), OID_E_DATABASE);
    EXPECT_NE(takeLog().find(folder + "/oids: no such file"), std::string::npos);
    std::filesystem::create_directory(folder + "/oids");
    EXPECT_EQ(open(), OID_E_DATABASE);
    OID_Term();
    EXPECT_EQ(open(), OID_E_NOT_INITIALISED);
    OID_Init(nullptr, folder.c_str(), 0);
    char name[OID_NAME_SIZE];
    EXPECT_EQ(OID_LookupShort(nullptr, nullptr, 1, name, nullptr), OID_E_HANDLE);
    EXPECT_EQ(OID_CloseDb(nullptr, &handle), OID_E_HANDLE);
}

TEST_F(OidDatabase, LocaleRenames) {
    write("oids", "1.2.3\t7\t40\tjob\n1.2.4\t8\t40\tpage\n");
    write("oids.de", "# German\n1.2.3\tAuftrag\n1.9.9\tin no table\n");
    write("oids.de_CH", "1.2.3\tUftrag\n");
    write("oids.C", "1.2.3\tnever read\n");
    std::filesystem::create_directory(folder + "/oids.");
    write("oids./evil", "1.2.3\tevil\n");
    ASSERT_EQ(open(), 0) << takeLog();
    const char *cases[] = {"de=Auftrag",
                           "de_DE.UTF-8=Auftrag",
                           "de_CH.UTF-8@euro=Uftrag",
                           "fr_FR=job",
                           "de_DE@euro=Auftrag",
                           "C=job",
                           "de_CH=Uftrag",
                           "/evil=job",
                           "de=Auftrag",
                           "C.UTF-8=job",
                           "de=Auftrag",
                           "=job",
                           "de_AT=Auftrag",
                           "../de=job"};
    for (const std::string row : cases) {
        const std::string locale = row.substr(0, row.find('=')), name = row.substr(row.find('=') + 1);
        ASSERT_EQ(setLocale(locale), 0) << locale;
        EXPECT_EQ(nameOf("1.2.3"), name) << locale;
        EXPECT_EQ(nameOf(7), name) << locale;
        EXPECT_EQ(nameOf(8), "page") << locale;
        EXPECT_EQ(nameOf("1.9.9"), "unknown") << locale;
    }
    EXPECT_EQ(setLocale(std::string(5000, 'x')), 0);
}

TEST_F(OidDatabase, MalformedRenamingTableLeavesTheLocale) {
    write("oids", "1.2.3\t7\t40\tjob\n");
    write("oids.de", "1.2.3\tAuftrag\n");
    const char *tables[] = {"1.2.3\tone\n1.2.3\ttwo\n", "1.2.3\t\n", "1.2.3\t7\t40\tjob\n",
                            "1.9.9\tone\n1.9.9\ttwo\n"};
    for (const char *table : tables) {
        write("oids.fr", table);
        ASSERT_EQ(open(), 0);
        EXPECT_EQ(setLocale("de"), 0);
        EXPECT_EQ(setLocale("fr_FR"), OID_E_DATABASE) << table;
        EXPECT_NE(takeLog().find(folder + "/oids.fr:"), std::string::npos) << table;
        EXPECT_EQ(setLocale("fr_FR"), OID_E_DATABASE) << table;
        EXPECT_EQ(nameOf(7), "Auftrag") << table;
        OID_CloseDb(nullptr, &handle);
    }
}
