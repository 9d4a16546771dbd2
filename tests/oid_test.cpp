#include <fstream>
#include <vector>

#include <gtest/gtest.h>

#include "service/log/log_internal.h"
#include "service/oid/oid.h"
#include "tests/support/temp_dir.h"

using namespace std::string_literals;
using Bytes = std::basic_string<std::uint8_t>;

static Bytes binaryOf(const std::string &decimal) {
    std::uint8_t binary[OID_BINARY_SIZE];
    if (OID_ConvertDecToBin(nullptr, decimal.c_str(), binary, 0) != 0)
        return {};
    return {binary, binary + 1 + binary[0]};
}

TEST(OidBinary, ArcsBecomeContentsOctets) {
    const std::pair<const char *, Bytes> cases[] = {
        {"0.0", {1, 0}},
        {"2.47", {1, 127}},
        {"2.48", {2, 0x81, 0x00}},
        {"1.0.10175.1.127.128", {7, 0x28, 0xCF, 0x3F, 0x01, 0x7F, 0x81, 0x00}},
        {"1.2.18446744073709551616", {11, 0x2A, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}},
    };
    for (const auto &[decimal, binary] : cases)
        EXPECT_EQ(binaryOf(decimal), binary) << decimal;
}

TEST(OidBinary, InvalidTextLeavesTheBufferUnchanged) {
    for (const char *text :
         {"",     "1",    "3.1",  "1.40", "0.40", ".1",  "1..2", "1.02",   "01.2", "1.2.a",
          "1.2 ", " 1.2", "1.-2", "+1.2", "1.2.", "1,2", "10.1", "1.2.00", "2.",   "1.2.\xB2"}) {
        std::uint8_t binary[OID_BINARY_SIZE] = {9};
        EXPECT_EQ(OID_ConvertDecToBin(nullptr, text, binary, 0), OID_E_SYNTAX) << text;
        EXPECT_EQ(binary[0], 9) << text;
    }
}

TEST(OidBinary, MoreThanSeventyTwoContentsOctetsAreRefused) {
    std::string decimal = "1.2";
    for (int arc = 1; arc < OID_BINARY_SIZE - 1; ++arc)
        decimal += ".5";
    EXPECT_EQ(binaryOf(decimal).size(), static_cast<std::size_t>(OID_BINARY_SIZE));
    EXPECT_TRUE(binaryOf(decimal + ".5").empty());
    EXPECT_FALSE(binaryOf("1.2.1" + std::string(149, '0')).empty()); // 10^149 < 2^(7 * 71)
    EXPECT_TRUE(binaryOf("1.2.1" + std::string(150, '0')).empty());
    EXPECT_TRUE(binaryOf("1.2." + std::string(100000, '9')).empty());
}

class OidDatabase : public testing::Test {
protected:
    OidDatabase() {
        setenv("QV_LOG", log.c_str(), 1);
        LOG__Reset();
        OID_Init(nullptr, folder.path().c_str(), 0);
    }
    ~OidDatabase() override {
        if (handle != nullptr)
            OID_CloseDb(nullptr, &handle);
        OID_Term();
        unsetenv("QV_LOG");
        LOG__Reset();
    }

    void write(const std::string &file, const std::string &text) const {
        std::ofstream(folder / file, std::ios::binary) << text;
    }
    std::int32_t open() { return OID_OpenDb(nullptr, folder.path().c_str(), 0, 0, &handle); }
    std::int32_t setLocale(std::string locale) {
        char *text = locale.data();
        return OID_SetLocale(nullptr, &handle, &text);
    }
    std::string nameOf(const std::string &decimal) {
        char name[OID_NAME_SIZE] = "";
        const bool known = OID_LookupBinary(nullptr, handle, binaryOf(decimal).c_str(), name, 0) == 0;
        return known ? name : "unknown";
    }
    std::string nameOf(AS_attrID_t identifier) {
        char name[OID_NAME_SIZE] = "";
        return OID_LookupShort(nullptr, handle, identifier, name, nullptr) == 0 ? name : "unknown";
    }
    // Returns the text that was logged since the last call.
    std::string takeLog() const {
        LOG__Reset();
        const std::string text = readFile(log);
        std::filesystem::resize_file(log, 0);
        return text;
    }

    const TempDir folder;
    const std::filesystem::path log = folder / "log";
    void *handle = nullptr;
};

TEST_F(OidDatabase, NamesAreFoundByOidAndByShortIdentifier) {
    const std::string longName = std::string(253, 'x') + "\xC3\xA4";
    std::string more; // more names than a new table has room for
    for (AS_attrID_t at = 100; at < 300; ++at)
        more +=
            "1.2." + std::to_string(at) + '\t' + std::to_string(at) + "\t40\tn" + std::to_string(at) + '\n';
    write("oids", "#" + std::string(70'000, 'c') + '\n' + more +
                      "\n \t\n1.2.3\t7\t40\tjob-name\r\n1.2.4\t0\t00\tno short one\n"
                      "1.2.5\t4294967295\tfF\t" +
                      longName); // no newline at the end of the table
    ASSERT_EQ(open(), 0) << takeLog();
    EXPECT_EQ(nameOf("1.2.3"), "job-name");
    EXPECT_EQ(nameOf(7), "job-name");
    EXPECT_EQ(nameOf("1.2.4"), "no short one");
    EXPECT_EQ(nameOf(0), "unknown");
    for (AS_attrID_t at = 100; at < 300; ++at)
        EXPECT_EQ(nameOf(at) + nameOf("1.2." + std::to_string(at)),
                  "n" + std::to_string(at) + "n" + std::to_string(at));
    EXPECT_EQ(nameOf("1.2"), "unknown");

    char name[OID_NAME_SIZE];
    Bytes classes(OID_CLASS_SIZE, 0xEE);
    ASSERT_EQ(OID_LookupShort(nullptr, handle, 4294967295U, name, classes.data()), 0);
    EXPECT_EQ(name, longName);
    EXPECT_EQ(classes, Bytes(1, 0) + Bytes(1, 0xFF) + Bytes(OID_CLASS_SIZE - 2, 0));
}

TEST_F(OidDatabase, AMalformedLineIsLoggedWithItsNumber) {
    std::vector<std::string> lines = {"4\t8\t40\ta\0b"s, "4\t8\t40\t" + std::string(256, 'x')};
    for (const char *line :
         {"4\t8\t40", "4\t8\t40\tn\t", "4\t\t8\t40\tn", "4 8 40 n", "4.\t8\t40\tn", "4\t\t40\tn",
          "4\t4294967296\t40\tn", "4\t-1\t40\tn", "4\t8x\t40\tn", "4\t8\t4\tn", "4\t8\t4g\tn", "4\t8\t40\t",
          "4\t8\t40\t\xE4", "4\t8\t40\t\xED\xA0\x80", "4\t8\t40\t\xC0\xAF", "3\t8\t40\tsame",
          "4\t7\t40\tsame"})
        lines.emplace_back(line);
    for (const std::string &line : lines) {
        write("oids", "# comment\n1.2.3\t7\t40\tname\n1.2." + line + "\r\n");
        EXPECT_EQ(open(), OID_E_DATABASE) << line;
        EXPECT_EQ(handle, nullptr) << line;
        EXPECT_NE(takeLog().find("/oids:3: "), std::string::npos) << line;
    }
}

TEST_F(OidDatabase, OpeningWithoutATableFails) {
    EXPECT_EQ(open(), OID_E_DATABASE);
    EXPECT_NE(takeLog().find("/oids: no such file"), std::string::npos);
    std::filesystem::create_directory(folder / "oids");
    EXPECT_EQ(open(), OID_E_DATABASE);
    OID_Term();
    EXPECT_EQ(open(), OID_E_NOT_INITIALISED);
    char name[OID_NAME_SIZE];
    EXPECT_EQ(OID_LookupShort(nullptr, nullptr, 1, name, nullptr), OID_E_HANDLE);
    EXPECT_EQ(OID_CloseDb(nullptr, &handle), OID_E_HANDLE);
}

TEST_F(OidDatabase, TheLocalesTableRenamesAttributes) {
    write("oids", "1.2.3\t7\t40\tjob\n1.2.4\t8\t40\tpage\n");
    write("oids.de", "# German\n1.2.3\tAuftrag\n1.9.9\tin no table\n");
    write("oids.de_CH", "1.2.3\tUftrag\n");
    write("oids.C", "1.2.3\tnever read\n");
    std::filesystem::create_directory(folder / "oids.");
    write("oids./evil", "1.2.3\tevil\n");
    ASSERT_EQ(open(), 0) << takeLog();
    const std::pair<std::string, const char *> cases[] = {{"de_DE.UTF-8", "Auftrag"},
                                                          {"de_CH.UTF-8@euro", "Uftrag"},
                                                          {"fr_FR", "job"},
                                                          {"C", "job"},
                                                          {"de_CH", "Uftrag"},
                                                          {"/evil", "job"},
                                                          {"de", "Auftrag"},
                                                          {"", "job"},
                                                          {"../de", "job"}};
    for (const auto &[locale, name] : cases) {
        ASSERT_EQ(setLocale(locale), 0) << locale;
        EXPECT_EQ(nameOf("1.2.3"), name) << locale;
        EXPECT_EQ(nameOf(7), name) << locale;
        EXPECT_EQ(nameOf(8), "page") << locale;
        EXPECT_EQ(nameOf("1.9.9"), "unknown") << locale;
    }
    EXPECT_EQ(setLocale(std::string(5000, 'x')), 0);
}

TEST_F(OidDatabase, AMalformedRenamingTableKeepsTheFormerLocale) {
    write("oids", "1.2.3\t7\t40\tjob\n");
    write("oids.de", "1.2.3\tAuftrag\n");
    for (const char *table :
         {"1.2.3\tone\n1.2.3\ttwo\n", "1.2.3\t\n", "1.2.3\t7\t40\tjob\n", "1.9.9\tone\n1.9.9\ttwo\n"}) {
        write("oids.fr", table);
        ASSERT_EQ(open(), 0);
        EXPECT_EQ(setLocale("de"), 0);
        EXPECT_EQ(setLocale("fr_FR"), OID_E_DATABASE) << table;
        EXPECT_NE(takeLog().find("/oids.fr:"), std::string::npos) << table;
        EXPECT_EQ(setLocale("fr_FR"), OID_E_DATABASE) << table << ", again";
        EXPECT_EQ(nameOf(7), "Auftrag") << table;
        OID_CloseDb(nullptr, &handle);
    }
}
