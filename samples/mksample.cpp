// mksample: creates the root folder of a sample print system, for demonstrations and measurements.
#include <charconv>
#include <cstdio>
#include <exception>
#include <string_view>

#include "samples/demo_root.h"

static constexpr char kUsage[] =
    "usage: mksample DIR [--jobs N] [--days N] [--server NAME] [--totals]\n"
    "Creates the root of a print system in DIR: the registry file, the OID tables, and the\n"
    "accounting logs of some past days and of today.\n"
    "  --jobs N       jobs in each log (12)\n"
    "  --days N       past days with a log (5, at most 3650)\n"
    "  --server NAME  server whose logs to write (alpha)\n"
    "  --totals       print the name, jobs and sheets of each user, from the logs that admit you\n";

namespace {

struct Arguments {
    std::string directory;
    samples::DemoOptions demo;
    bool help = false;
    bool totals = false;
};

// The programs cannot load a longer setting.  The root's path becomes the setting QV_ROOT.
constexpr std::size_t kLongestSetting = 259; // bytes
constexpr std::uint32_t kMostDays = 3650;

template <class Number>
bool parseNumber(std::string_view text, Number &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool hasControl(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) < ' ')
            return true;
    return false;
}

bool parseOption(std::string_view option, std::string_view value, samples::DemoOptions &demo) {
    if (option == "--jobs")
        return parseNumber(value, demo.jobs);
    if (option == "--days")
        return parseNumber(value, demo.days) && demo.days <= kMostDays;
    if (option == "--server") {
        demo.server = value;
        return !value.empty() && value.find('/') == value.npos && !hasControl(value);
    }
    return false;
}

bool parseArguments(int argc, char **argv, Arguments &arguments) {
    for (int i = 1; i < argc; i++) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            arguments.help = true;
            return true;
        }
        if (argument == "--totals") {
            arguments.totals = true;
        } else if (argument.starts_with("-")) {
            const std::string_view value = i + 1 < argc ? argv[i + 1] : "";
            if (!parseOption(argument, value, arguments.demo)) {
                std::fprintf(stderr, "mksample: bad argument: %s %s\n", argv[i], value.data());
                return false;
            }
            i++;
        } else if (arguments.directory.empty() && !argument.empty()) {
            arguments.directory = argument;
        } else {
            std::fprintf(stderr, "mksample: bad argument: %s\n", argv[i]);
            return false;
        }
    }
    return !arguments.directory.empty();
}

} // namespace

int main(int argc, char **argv) try {
    Arguments arguments;
    if (!parseArguments(argc, argv, arguments)) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    if (arguments.help)
        return std::fputs(kUsage, stdout) < 0 ? 1 : 0;

    const samples::Account caller = samples::callersAccount();
    const samples::SampleRoot root(arguments.directory);
    if (root.path().string().size() > kLongestSetting || hasControl(root.path().string())) {
        std::fprintf(stderr, "mksample: %s: this path cannot be stored in the registry file\n",
                     root.path().string().c_str());
        return 1;
    }
    const samples::Totals totals = layDemo(root, caller, arguments.demo);
    if (arguments.totals)
        for (const auto &[user, total] : totals)
            std::printf("%s\t%llu\t%llu\n", user.c_str(), static_cast<unsigned long long>(total.jobs),
                        static_cast<unsigned long long>(total.sheets));
    return std::fflush(stdout) == 0 ? 0 : 1;
} catch (const std::exception &failure) {
    std::fprintf(stderr, "mksample: %s\n", failure.what());
    return 1;
}
