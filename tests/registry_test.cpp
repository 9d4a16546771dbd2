// The registry calls, which read a registry file.
#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/os.h"
#include "tests/support/temp_dir.h"

using namespace std::string_literals;

class RegistryFile : public testing::Test {
protected:
    RegistryFile() { setenv("QV_REGISTRY", path.c_str(), 1); }
    ~RegistryFile() override { unsetenv("QV_REGISTRY"); }

    void write(const std::string &bytes) { std::ofstream(path, std::ios::binary) << bytes; }

    static LONG open(const char *path) {
        HKEY key = nullptr;
        const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key);
        if (result == ERROR_SUCCESS)
            RegCloseKey(key);
        return result;
    }

    // Returns "name:type:data;" for each value of a key, then "enum N" if error N follows; or only "open N".
    static std::string list(const char *path) {
        HKEY key = nullptr;
        if (const LONG result = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key); result != 0)
            return "open " + std::to_string(result);
        std::string listed;
        LONG result = ERROR_SUCCESS;
        for (DWORD index = 0; result == ERROR_SUCCESS; ++index) {
            char name[260], data[260];
            DWORD nameSize = sizeof name, dataSize = sizeof data, type = 0;
            result = RegEnumValueA(key, index, name, &nameSize, nullptr, &type,
                                   reinterpret_cast<BYTE *>(data), &dataSize);
            if (result == ERROR_SUCCESS)
                listed += std::string(name, nameSize) + ":" + std::to_string(type) + ":" +
                          std::string(data, dataSize) + ";";
        }
        RegCloseKey(key);
        return result == ERROR_NO_MORE_ITEMS ? listed : listed + "enum " + std::to_string(result);
    }

    const TempDir folder;
    const std::string path = folder / "registry.reg";
};

constexpr char kNew[] = "Windows Registry Editor Version 5.00\n";
constexpr char kOld[] = "REGEDIT4\n";
constexpr char kKey[] = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n";

TEST_F(RegistryFile, EveryFormOfDataIsRead) {
    const struct {
        const char *label;
        std::string lines, listed;
        const char *header = kNew;
    } cases[] = {
        {"escapes", R"("q\"\\"="\\\"x\\")", "q\"\\:1:\\\"x\\\0;"s},
        {"empty text, comment, spaces", "  ; note\n\n \"a\" = \"\" ; \"x\"=", "a:1:\0;"s},
        {"unnamed", "@=\"d\"\n", ":1:d\0;"s},
        {"number", "\"n\"=dword:A2345", "n:4:\x45\x23\x0A\0;"s},
        {"bytes", "\"b\"=hex:41,00,ff", "b:3:A\0\xFF;"s},
        {"bytes over lines", "\"b\"=hex:\\\n 41,\\\n\t42\\\n ,43\n\"c\"=\"\"", "b:3:ABC;c:1:\0;"s},
        {"wide text", "\"b\"=hex(2):e9,00,3d,d8,00,de,00,00", "b:2:\xC3\xA9\xF0\x9F\x98\x80\0;"s},
        {"wide text without a terminator", "\"b\"=hex(1):41,00", "b:1:A\0;"s},
        {"wide texts", "\"b\"=hex(7):41,00,00,00,42,00,00,00,00,00", "b:7:A\0B\0\0;"s},
        {"text in bytes in an old file", "\"b\"=hex(2):e9,00", "b:2:\xE9\0;"s, kOld},
        {"8-bit text keeps its bytes", "\"\xE9\"=\"\xFF\"", "\xE9:1:\xFF\0;"s},
        {"order and duplicates", "\"b\"=\"1\"\n\"a\"=\"2\"\n\"B\"=dword:41", "b:4:A\0\0\0;a:1:2\0;"s},
        {"a key twice", "\"a\"=\"1\"\n[hkey_local_machine\\software\\KEY]\n\"b\"=\"2\"", "a:1:1\0;b:1:2\0;"s},
        {"other roots", "[HKEY_CURRENT_USER\\SOFTWARE\\Key]\n\"a\"=\"1\"", ""},
    };
    for (const auto &row : cases) {
        write(row.header + (kKey + row.lines));
        EXPECT_EQ(list("Software\\KEY"), row.listed) << row.label;
        EXPECT_STREQ(OS_RegistryTrouble(), "") << row.label;
    }
}

TEST_F(RegistryFile, EveryEncodingAndLineEndIsRead) {
    const std::string plain = kNew + (kKey + "\"n\xC3\xA9\"=hex:41,\\\n  42\n"s);
    std::string crLf, little = "\xFF\xFE", big = "\xFE\xFF";
    for (const char byte : plain)
        crLf += byte == '\n' ? "\r\n" : std::string(1, byte);
    for (std::size_t i = 0; i < crLf.size(); ++i) {
        const char unit = crLf[i] == '\xC3' ? crLf[++i] + 0x40 : crLf[i]; // the only non-ASCII character
        little += {unit, '\0'};
        big += {'\0', unit};
    }
    const std::pair<const char *, std::string> cases[] = {
        {"plain", plain},     {"CR LF", crLf},   {"byte order mark", "\xEF\xBB\xBF" + plain},
        {"UTF-16LE", little}, {"UTF-16BE", big}, {"no last line end", plain.substr(0, plain.size() - 1)}};
    for (const auto &[label, bytes] : cases) {
        write(bytes);
        EXPECT_EQ(list("SOFTWARE\\Key"), "n\xC3\xA9:3:AB;") << label;
    }
    write(little + "x");
    EXPECT_EQ(open("SOFTWARE\\Key"), ERROR_REGISTRY_CORRUPT) << "half a character";
}

TEST_F(RegistryFile, AMalformedLineFailsEveryOpenAndIsReported) {
    const std::pair<std::string, const char *> cases[] = {
        {"\n"s + kNew, ":1: no registry header"},
        {kNew + "\"a\"=\"b\""s, ":2: value outside a key"},
        {kNew + "[HKEY_LOCAL_MACHINE\\A"s, ":2: malformed key"},
        {kNew + "[HKEY_LOCAL_MACHINE\\A\\\\B]"s, ":2: malformed key"},
        {kNew + "[HKEY_LOKAL_MACHINE\\A]"s, ":2: malformed key"},
        {kOld + (kKey + "# a\n"s), ":3: a comment begins with ;"},
        {kOld + (kKey + "\"a=\"b\""s), ":3: malformed line"},
        {kOld + (kKey + "\"a\"=\"b\0\""s), ":3: malformed line"},
        {kOld + (kKey + "\n\"a\"=\"b\n"s), ":4: malformed value"},
        {kOld + (kKey + "\"a\"=\"C:\\d\""s), ":3: malformed value"},
        {kOld + (kKey + "\"a\"=dword:123456789"s), ":3: malformed value"},
        {kOld + (kKey + "\"a\"=hex(:41"s), ":3: malformed value"},
        {kOld + (kKey + "\"a\"=hex:41,\\"s), ":3: malformed value"},
        {kOld + (kKey + "\"a\"=hex:41,\\\n42,\\\n4x"s), ":5: malformed value"},
        {kNew + (kKey + "\"a\"=hex(1):41"s), ":3: malformed value"},
        {kNew + "[HKEY_USERS]\n\"a\"=b"s, ":3: malformed value"},
    };
    for (const auto &[bytes, reported] : cases) {
        write(bytes);
        EXPECT_EQ(open("SOFTWARE"), ERROR_REGISTRY_CORRUPT) << bytes;
        EXPECT_EQ(OS_RegistryTrouble(), path + reported) << bytes;
    }
}

TEST_F(RegistryFile, TheParentsOfAKeyExist) {
    EXPECT_EQ(open("SOFTWARE"), ERROR_FILE_NOT_FOUND) << "no file";
    write(kOld + "[HKEY_LOCAL_MACHINE\\A\\B c\\D]\n[HKEY_LOCAL_MACHINE\\A\\B!]\n"s);
    for (const char *key : {"A", "a\\b C", "A\\B c\\D", "A\\B!", "A\\", ""})
        EXPECT_EQ(open(key), ERROR_SUCCESS) << key;
    for (const char *key : {"A\\B", "A\\\\", "B c", "\\A", "A\\B c\\D\\E"})
        EXPECT_EQ(open(key), ERROR_FILE_NOT_FOUND) << key;
    EXPECT_STREQ(OS_RegistryTrouble(), "");
}

TEST_F(RegistryFile, AnUnreadableFileIsReported) {
    const auto expectRefused = [&](const std::string &reason) {
        EXPECT_EQ(open("SOFTWARE"), ERROR_REGISTRY_CORRUPT);
        EXPECT_EQ(OS_RegistryTrouble(), path + ": " + reason);
        std::remove(path.c_str());
    };
    mkdir(path.c_str(), 0700);
    expectRefused("no regular file");
    mkfifo(path.c_str(), 0600); // opening the pipe must not wait for a writer
    expectRefused("no regular file");
    write(kOld);
    ASSERT_EQ(truncate(path.c_str(), (64 << 20) + 1), 0);
    expectRefused("larger than 64 MiB");
}
