// mksample: creates the root folder of a sample print system, for demonstrations and measurements.
#include <charconv>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "samples/demo_root.h"

static constexpr char kUsage[] =
    "usage: mksample DIR [--server NAME] [--user NAME]... [--group NAME]... [--jobs N] [--days N]\n"
    "                    [--today DATE] [--failed N] [--log-version N] [--cut] [--zeros] [--totals]\n"
    "Creates the root of a print system in DIR: the registry file, the OID tables, and the\n"
    "accounting logs of some past days and of today.\n"
    "  --server NAME    server whose logs to write (alpha)\n"
    "  --user NAME      let all logs admit this user instead of you\n"
    "  --group NAME     let all logs admit this group instead of you\n"
    "  --jobs N         jobs in each log (12, at most 1000000)\n"
    "  --days N         past days with a log (5, at most 3650)\n"
    "  --today DATE     date of the newest log, YYYYMMDD (the current day)\n"
    "  --failed N       let every Nth job fail, and give each job the attribute job-state\n"
    "  --log-version N  format version of the logs: 1, 2 or 3 (3)\n"
    "  --cut            cut the log of yesterday inside its last record\n"
    "  --zeros          replace bytes in the middle of the oldest log with zeros\n"
    "  --totals         print the name, jobs and sheets of each user, from the logs that admit you\n"
    "  --help           print this text\n"
    "  --version        print the version\n";

namespace {

struct Arguments {
    std::string directory;
    samples::DemoOptions demo;
    bool help = false;
    bool version = false;
    bool totals = false;
};

// The programs cannot load a longer setting.  The root's path becomes the setting QV_ROOT.
constexpr std::size_t kLongestSetting = 259; // bytes

struct NumberOption {
    std::string_view name;
    std::uint32_t samples::DemoOptions::*member;
    std::uint32_t least, most;
};

// A log of 1,000,000 jobs has about 4 GB.
constexpr NumberOption kNumbers[] = {
    {"--jobs", &samples::DemoOptions::jobs, 0, 1'000'000},
    {"--days", &samples::DemoOptions::days, 0, 3650},
    {"--failed", &samples::DemoOptions::failed, 1, 1'000'000},
    {"--log-version", &samples::DemoOptions::logVersion, 1, 3},
};

[[noreturn]] void refuse(const std::string &option, const std::string &accepted, const std::string &value) {
    throw std::runtime_error(option + " accepts " + accepted + ", not \"" + value + '"');
}

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

// Noon of the date.  Refuses future dates: programs take SERVER.current for the log of the real current day,
// so a log of that day with its date in the name would not be read.
std::time_t parseDate(const std::string &text) {
    std::uint32_t number = 0;
    if (text.size() == 8 && parseNumber(text, number)) {
        std::tm date{};
        date.tm_year = static_cast<int>(number / 10000) - 1900;
        date.tm_mon = static_cast<int>(number / 100 % 100) - 1;
        date.tm_mday = static_cast<int>(number % 100);
        date.tm_hour = 12;
        date.tm_isdst = -1;
        const int month = date.tm_mon;
        const int day = date.tm_mday;
        const std::time_t noon = std::mktime(&date);
        constexpr std::time_t kHalfDay = 12 * 3600;
        const bool exists = date.tm_mon == month && date.tm_mday == day; // mktime() accepts February 30
        if (exists && noon != -1 && number >= 19700101 && noon - kHalfDay <= std::time(nullptr))
            return noon;
    }
    refuse("--today", "a date from 19700101 to today", text);
}

// False if there is no such option with a value.
bool setOption(const std::string &option, const std::string &value, samples::DemoOptions &demo) {
    for (const auto &[name, member, least, most] : kNumbers)
        if (option == name) {
            if (!parseNumber(value, demo.*member) || demo.*member < least || demo.*member > most)
                refuse(option, "a number from " + std::to_string(least) + " to " + std::to_string(most),
                       value);
            return true;
        }
    const bool isName = !value.empty() && !hasControl(value);
    if (option == "--server") {
        if (!isName || value.find('/') != value.npos)
            refuse(option, "a name without slashes and control characters", value);
        demo.server = value;
    } else if (option == "--user" || option == "--group") {
        if (!isName)
            refuse(option, "a name without control characters", value);
        (option == "--user" ? demo.users : demo.groups).push_back(samples::accountName(value));
    } else if (option == "--today") {
        demo.today = parseDate(value);
    } else {
        return false;
    }
    return true;
}

bool *findFlag(std::string_view option, Arguments &arguments) {
    return option == "--help"      ? &arguments.help
           : option == "--version" ? &arguments.version
           : option == "--totals"  ? &arguments.totals
           : option == "--cut"     ? &arguments.demo.cut
           : option == "--zeros"   ? &arguments.demo.zeros
                                   : nullptr;
}

// Throws std::runtime_error with a message for the user.
Arguments parseArguments(const std::vector<std::string> &words) {
    Arguments arguments;
    for (std::size_t i = 0; i < words.size() && !arguments.help && !arguments.version; i++) {
        const std::string &word = words[i];
        if (bool *flag = findFlag(word, arguments)) {
            *flag = true;
        } else if (word.starts_with("-")) {
            const bool hasValue = i + 1 < words.size();
            if (!setOption(word, hasValue ? words[i + 1] : "", arguments.demo))
                throw std::runtime_error("unknown option: " + word + "; mksample --help lists the options");
            i++;
        } else if (arguments.directory.empty() && !word.empty()) {
            arguments.directory = word;
        } else {
            throw std::runtime_error("one directory is needed, not also \"" + word + '"');
        }
    }
    if (arguments.demo.days == 0 && (arguments.demo.cut || arguments.demo.zeros))
        throw std::runtime_error("--cut and --zeros damage logs of past days, but --days is 0");
    return arguments;
}

} // namespace

int main(int argc, char **argv) try {
    const Arguments arguments = parseArguments({argv + 1, argv + argc});
    if (arguments.help || arguments.version)
        return std::fputs(arguments.help ? kUsage : "mksample " MKSAMPLE_VERSION "\n", stdout) < 0 ? 1 : 0;
    if (arguments.directory.empty()) {
        std::fputs(kUsage, stderr);
        return 1;
    }

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
