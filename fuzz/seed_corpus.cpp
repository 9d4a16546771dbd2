// Lays the first inputs of the targets: logs, values, tables and settings of the sample print system.
//
//     seed_corpus FOLDER ROOT     ROOT was laid by mksample
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "samples/log_writer.h"
#include "samples/output_file.h"

namespace fs = std::filesystem;

static std::string readWhole(const fs::path &in_file) {
    std::ifstream in(in_file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

static std::uint32_t nativeWord(const std::string &in_bytes, std::size_t in_at) {
    std::uint32_t word = 0;
    in_bytes.copy(reinterpret_cast<char *>(&word), sizeof word, in_at);
    return word;
}

static std::uint32_t netWord(const std::string &in_bytes, std::size_t in_at) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < sizeof word; ++i)
        word = word << 8 | static_cast<unsigned char>(in_bytes[in_at + i]);
    return word;
}

// Every distinct value of a version 3 log, its type in front; the log as far as its second record.
static void seedFromLog(const fs::path &in_folder, const std::string &in_log, int *inoutp_values) {
    std::size_t at = 8;
    std::uint32_t attributes = netWord(in_log, at);
    at += 4;
    for (int record = 0; record < 3; ++record) {
        for (; attributes > 0; --attributes) {
            std::uint32_t values = nativeWord(in_log, at);
            const auto type = static_cast<char>(nativeWord(in_log, at + samples::TAG_SIZE - 4));
            at += samples::TAG_SIZE;
            for (; values > 0; --values) {
                const std::uint32_t length = nativeWord(in_log, at);
                samples::writeFile(in_folder / "value" / std::to_string((*inoutp_values)++),
                                   std::string(1, type) + in_log.substr(at + 4, length));
                at += 4 + length;
            }
        }
        samples::writeFile(in_folder / "log" /
                               (std::to_string(*inoutp_values) + "-" + std::to_string(record)),
                           in_log.substr(0, at));
        if (at >= in_log.size())
            return;
        attributes = netWord(in_log, at);
        at += 12;
    }
}

static void seed(const fs::path &in_folder, const fs::path &in_root) {
    for (const char *target : {"log", "value", "oid", "registry", "command_line"})
        fs::create_directories(in_folder / target);
    int values = 0;
    for (const auto &log : fs::directory_iterator(in_root / "var/acct"))
        seedFromLog(in_folder, readWhole(log.path()), &values);
    samples::writeFile(in_folder / "oid/oids", readWhole(in_root / "share/oid/oids").substr(0, 2000));
    samples::writeFile(in_folder / "oid/oids.de", readWhole(in_root / "share/oid/oids.de"));
    samples::writeFile(in_folder / "registry/settings", readWhole(in_root / "registry.reg"));
    const std::string nul(1, '\0');
    samples::writeFile(in_folder / "command_line/range",
                       "-a" + nul + "-s" + nul + "19990301" + nul + "-e20991231" + nul + "alpha");
    samples::writeFile(in_folder / "command_line/file", "-dgo" + nul + "report" + nul + "alpha");
    samples::writeFile(in_folder / "command_line/paths",
                       "-p" + nul + "." + nul + "-O" + nul + "share" + nul + "b");
    samples::writeFile(in_folder / "command_line/help", "-hVx");
}

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fputs("usage: seed_corpus FOLDER ROOT\n", stderr);
        return 1;
    }
    try {
        seed(argv[1], argv[2]);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "seed_corpus: %s\n", failure.what());
        return 1;
    }
    return 0;
}
