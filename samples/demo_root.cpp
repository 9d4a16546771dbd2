#include "samples/demo_root.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <ctime>
#include <fstream>

#include "samples/log_writer.h"
#include "samples/sample_jobs.h"

namespace samples {

namespace fs = std::filesystem;

// ---- Access lists ----

// Mixes the case of a name, because names of users and groups compare without regard to case.
static std::string mixedCase(std::string name) {
    for (std::size_t i = 0; i < name.size(); i += 2)
        name[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[i])));
    return name;
}

// A reader of logs fetches the user's groups into a buffer for 15 groups.  If the user has more groups, no
// group entry admits the user.
static constexpr std::size_t kMostGroups = 15;

static std::vector<Value> admitUser(const Account &caller) {
    AccessEntry powerless = userEntry(caller.user.name, caller.user.domain);
    powerless.privilege = 1;
    return {pack(userEntry("auditor", "HEADOFFICE")), pack(powerless),
            pack(userEntry(mixedCase(caller.user.name), caller.user.domain))};
}

static std::vector<Value> admitGroup(const Account &caller) {
    std::vector<Value> entries = {pack(groupEntry("auditors", "HEADOFFICE"))};
    if (!caller.groups.empty())
        entries.push_back(pack(groupEntry(mixedCase(caller.groups[0].name), caller.groups[0].domain)));
    if (caller.groups.empty() || caller.groupIds > kMostGroups)
        entries.push_back(pack(userEntry(caller.user.name, caller.user.domain)));
    return entries;
}

static std::vector<Value> admitAnyUser(const Account &) {
    return {pack(anyUserEntry())};
}

static std::vector<Value> admitNobody() {
    return {pack(userEntry("auditor", "HEADOFFICE"))};
}

// The number of the log that refuses the user.  Logs are numbered from 0, beginning with the oldest.
static constexpr std::uint32_t kRefusedLog = 1;

static bool admitsNobody(std::uint32_t log, bool current) {
    return log == kRefusedLog && !current;
}

static std::vector<Value> admitNamed(const DemoOptions &options) {
    std::vector<Value> entries = admitNobody();
    for (const AccountName &user : options.users)
        entries.push_back(pack(userEntry(mixedCase(user.name), user.domain)));
    for (const AccountName &group : options.groups)
        entries.push_back(pack(groupEntry(mixedCase(group.name), group.domain)));
    return entries;
}

// Access lists that admit the caller, each through another kind of entry.
static std::vector<Value> admitCaller(std::uint32_t log, bool current, const Account &caller) {
    if (admitsNobody(log, current))
        return admitNobody();
    constexpr std::vector<Value> (*kLists[])(const Account &) = {admitUser, admitAnyUser, admitGroup};
    return kLists[log % std::size(kLists)](caller);
}

// ---- Logs ----

static std::tm daysAgo(std::time_t now, std::uint32_t days) {
    std::tm date = *std::localtime(&now);
    date.tm_mday -= static_cast<int>(days);
    date.tm_hour = 12; // a change to or from summer time cannot move noon to another day
    date.tm_min = date.tm_sec = 0;
    date.tm_isdst = -1;
    std::mktime(&date);
    return date;
}

static std::string dateText(const std::tm &date) {
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y%m%d", &date)};
}

static void writeLog(const fs::path &path, const Day &day, JobKind kind, std::uint32_t version,
                     std::vector<Value> access, Totals &totals) {
    std::tm noon = day.date;
    LogWriter log(path, {.verNum = version,
                         .createDate = static_cast<std::uint32_t>(std::mktime(&noon)),
                         .accessList = std::move(access)});
    Job job;
    for (std::uint64_t number = 1; number <= day.jobs; number++) {
        const Bill bill = makeJob(day, number, kind, job);
        log.job(job);
        Total &total = totals[bill.owner];
        ++total.jobs;
        total.sheets += bill.sheets;
    }
    log.close();
}

// The date of the log of the current day is the date of its last change.
static void setLastChange(const fs::path &path, std::time_t time) {
    const auto changed = std::chrono::system_clock::from_time_t(time);
    fs::last_write_time(path, std::chrono::file_clock::from_sys(changed));
}

// ---- Damage ----

static void cutEnd(const fs::path &path) {
    constexpr std::uintmax_t kCut = 100; // bytes; every record and every header is longer
    fs::resize_file(path, fs::file_size(path) - kCut);
}

static void zeroMiddle(const fs::path &path) {
    constexpr std::uintmax_t kMostZeros = 600; // bytes
    const std::uintmax_t middle = fs::file_size(path) / 2;
    std::fstream log(path, std::ios::in | std::ios::out | std::ios::binary);
    log.exceptions(std::ios::failbit | std::ios::badbit);
    log.seekp(static_cast<std::streamoff>(middle));
    log << std::string(std::min(middle, kMostZeros), '\0') << std::flush;
}

// ---- The whole root ----

Totals layDemo(const SampleRoot &root, const Account &caller, const DemoOptions &options) {
    constexpr std::uint32_t kLogsPerOrderDay = 4;
    const std::time_t today = options.today.value_or(std::time(nullptr));
    const bool named = !options.users.empty() || !options.groups.empty();
    Totals admitted, refused;
    root.writeRegistry(options.server);
    for (std::uint32_t log = 0; log <= options.days; log++) {
        const bool current = log == options.days;
        const Day day{options.server, daysAgo(today, options.days - log), log, options.jobs, options.failed};
        const JobKind kind = log % kLogsPerOrderDay == 2 ? JobKind::ORDER : JobKind::OFFICE;
        const fs::path path = root.log(options.server, current ? "current" : dateText(day.date));
        writeLog(path, day, kind, options.logVersion,
                 named ? admitNamed(options) : admitCaller(log, current, caller),
                 !named && admitsNobody(log, current) ? refused : admitted);
        if (current && options.today)
            setLastChange(path, today);
        if (options.zeros && log == 0)
            zeroMiddle(path);
        if (options.cut && log + 1 == options.days)
            cutEnd(path);
    }
    return admitted;
}

} // namespace samples
