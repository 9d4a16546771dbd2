// Cuts the power after each recorded call of a run: no record may be lost, whatever reached the disk.
//
// strace records the calls that change or sync files.  A file's contents are safe once the file is synced; a
// name is safe once its folder is synced.  Any other change reached the disk completely or not at all.
// Tries all selections of up to 12 such changes.  If there are more, tries 4,096 random selections.
#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

#include <fcntl.h>
#include <unistd.h>

#include "tests/trials/numbered_records.h"

using namespace samples;
namespace fs = std::filesystem;

constexpr std::size_t kAllSelections = 12, kSomeSelections = 4096;
constexpr const char *kCalls =
    "trace=openat,write,pwrite64,ftruncate,fsync,fdatasync,syncfs,rename,renameat,renameat2,"
    "unlink,unlinkat,link,linkat";

namespace {

enum class Kind { Name, Unname, Move, Write, Cut, Sync, SyncFolder, SyncAll };

struct Call {
    Kind kind;
    int file;            // number of the file; -1 for a folder
    std::string path;    // path of the file or folder
    std::string to = {}; // new path of a moved file
    std::size_t at = 0;  // position of the written bytes, or size after the truncation
    std::string bytes = {};

    bool isData() const { return kind == Kind::Write || kind == Kind::Cut; }
    bool isChange() const { return kind < Kind::Sync; }
    bool makesSafe(const Call &earlier) const {
        return kind == Kind::SyncAll || (kind == Kind::Sync && earlier.isData() && earlier.file == file) ||
               (kind == Kind::SyncFolder && !earlier.isData() &&
                fs::path(earlier.path).parent_path() == path);
    }
};

// Contents of files, by path.
using State = std::map<std::string, std::string>;

class Power {
public:
    // If exists is true, an earlier run wrote the report and synced its contents, but not its name.
    void trial(const char *label, bool exists, const std::string &earlier, bool byLink, int output);
    void trialOfSaving();
    void trialSinceLastRun();
    unsigned faults = 0;

private:
    void lay(const State &state) const;
    State present() const;
    void record(const std::vector<std::string> &arguments, int output, const char *program);
    void note(const std::string &line);
    void change(Call call);
    State replay(std::size_t end, const std::vector<bool> &kept) const;
    template <class Judge>
    void cutEverywhere(const char *label, Judge judge);
    bool isKept(const std::string &report) const;

    PrintSystem system_;
    const fs::path reports_ = system_ / "reports", saved_ = system_ / "saved", logs_ = system_.root.logs();
    State before_;
    std::map<std::string, int> names_; // file number of each path, with all calls completed
    std::vector<std::size_t> sizes_;   // indexed by file number
    std::vector<Call> calls_;
};

} // namespace

// ---- Recording ----

State Power::present() const {
    State state;
    for (const fs::path &folder : {reports_, saved_, logs_})
        for (const auto &entry : fs::directory_iterator(folder))
            state[entry.path()] = readFile(entry.path());
    return state;
}

void Power::lay(const State &state) const {
    for (const fs::path &folder : {reports_, saved_, logs_}) {
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    for (const auto &[path, contents] : state)
        writeFile(path, contents);
}

void Power::change(Call call) {
    if (call.kind == Kind::Name)
        names_[call.path] = call.file;
    if (call.kind == Kind::Unname || call.kind == Kind::Move)
        names_.erase(call.path);
    if (call.kind == Kind::Move)
        names_[call.to] = call.file;
    if (call.isData())
        sizes_[static_cast<std::size_t>(call.file)] = call.at + call.bytes.size();
    calls_.push_back(std::move(call));
}

// Decodes the hexadecimal texts of a line: texts in quotation marks, and paths after descriptors.
static std::vector<std::string> textsIn(const std::string &line) {
    std::vector<std::string> texts;
    for (std::size_t at = 0; (at = line.find_first_of("\"<", at)) != line.npos;) {
        const std::size_t end = line.find(line[at] == '"' ? '"' : '>', at + 1);
        std::string &text = texts.emplace_back();
        for (at += 3; at + 2 <= end && end != line.npos; at += 4)
            text += static_cast<char>(std::stoi(line.substr(at, 2), nullptr, 16));
        at = end != line.npos ? end + 1 : line.size();
    }
    return texts;
}

void Power::note(const std::string &line) {
    const std::string name = line.substr(0, line.find('('));
    const std::vector<std::string> texts = textsIn(line);
    const std::size_t equals = line.rfind(" = ");
    if (texts.empty() || equals == line.npos || line[equals + 3] == '-')
        return;
    const std::string &subject = name == "openat" || name.ends_with("at2") ? texts.back() : texts.front();
    const auto known = names_.find(subject);
    const bool isFolder = subject == reports_ || subject == saved_ || subject == logs_;
    if (name == "openat" && known == names_.end() && !isFolder &&
        (fs::path(subject).parent_path() == reports_ || fs::path(subject).parent_path() == saved_)) {
        sizes_.push_back(0);
        change({Kind::Name, static_cast<int>(sizes_.size()) - 1, subject});
    } else if (name == "fsync" && isFolder) {
        change({Kind::SyncFolder, -1, subject});
    } else if (name == "syncfs") {
        change({Kind::SyncAll, -1, subject});
    } else if (name.starts_with("rename")) {
        if (const auto from = names_.find(texts[texts.size() / 2 - 1]); from != names_.end())
            change({Kind::Move, from->second, from->first, texts.back()});
    } else if (known == names_.end()) {
        return;
    } else if (name == "write") {
        const int file = known->second;
        change({Kind::Write, file, subject, "", sizes_[static_cast<std::size_t>(file)], texts[1]});
    } else if (name == "ftruncate") {
        change({Kind::Cut, known->second, subject, "", std::stoul(line.substr(line.rfind(", ", equals) + 2)),
                ""});
    } else if (name == "fsync" || name == "fdatasync") {
        change({Kind::Sync, known->second, subject});
    } else if (name == "unlink") {
        change({Kind::Unname, known->second, subject});
    } else if (name != "openat") {
        ++faults; // a call that this trial does not know
        std::printf("FAULT: %s\n", line.c_str());
    }
}

void Power::record(const std::vector<std::string> &arguments, int output, const char *program) {
    const std::string trace = system_ / "trace";
    std::vector<std::string> all = {"-qq", "-y", "-xx", "-s", "1000000", "-e", kCalls, "-o", trace, program};
    all.insert(all.end(), arguments.begin(), arguments.end());
    system_.run(all, {.environment = {{"QV_LOG", "none"}, {"ASAN_OPTIONS", "detect_leaks=0"}},
                      .output = output,
                      .program = "/usr/bin/strace"});
    std::istringstream lines(readFile(trace));
    for (std::string line; std::getline(lines, line);)
        note(line);
}

// ---- Cutting ----

State Power::replay(std::size_t end, const std::vector<bool> &kept) const {
    std::map<std::string, int> there;
    std::vector<std::string> contents(sizes_.size());
    for (const auto &[path, bytes] : before_) {
        contents[there.size()] = bytes;
        there.emplace(path, static_cast<int>(there.size()));
    }
    for (std::size_t i = 0; i < end; ++i) {
        const Call &call = calls_[i];
        if (!kept[i] || !call.isChange())
            continue;
        if (call.isData()) {
            std::string &bytes = contents[static_cast<std::size_t>(call.file)];
            bytes.resize(call.kind == Kind::Cut ? call.at
                                                : std::max(bytes.size(), call.at + call.bytes.size()));
            std::copy(call.bytes.begin(), call.bytes.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(call.at));
            continue;
        }
        if (call.kind != Kind::Name && there.contains(call.path) && there[call.path] == call.file)
            there.erase(call.path);
        if (call.kind != Kind::Unname)
            there[call.kind == Kind::Move ? call.to : call.path] = call.file;
    }
    State state;
    for (const auto &[path, file] : there)
        state[path] = contents[static_cast<std::size_t>(file)];
    return state;
}

template <class Judge>
void Power::cutEverywhere(const char *label, Judge judge) {
    std::set<State> seen;
    std::size_t selections = 0;
    std::mt19937 random(1);
    for (std::size_t end = 0; end <= calls_.size(); ++end) {
        std::vector<std::size_t> pending;
        std::vector<bool> kept(calls_.size(), true);
        for (std::size_t i = 0; i < end; ++i)
            if (calls_[i].isChange() &&
                std::none_of(calls_.begin() + static_cast<std::ptrdiff_t>(i),
                             calls_.begin() + static_cast<std::ptrdiff_t>(end),
                             [&](const Call &later) { return later.makesSafe(calls_[i]); }))
                pending.push_back(i);
        const bool all = pending.size() <= kAllSelections;
        const std::size_t count = all ? std::size_t{1} << pending.size() : kSomeSelections;
        for (std::size_t selection = 0; selection < count; ++selection, ++selections) {
            for (std::size_t i = 0; i < pending.size(); ++i)
                kept[pending[i]] = (all ? selection >> i & 1 : random() & 1) != 0;
            if (const State state = replay(end, kept);
                seen.insert(state).second && !judge(state) && ++faults != 0)
                std::printf("FAULT: %s: power lost after call %zu of %zu, selection %zu\n", label, end,
                            calls_.size(), selection);
        }
    }
    std::printf("%s: %zu calls, %zu selections, %zu states\n", label, calls_.size(), selections, seen.size());
}

// Is every record in a whole line of the report or in a log?
bool Power::isKept(const std::string &report) const {
    const std::multiset<int> lines = linesIn(readFile(report));
    Numbers found(lines.begin(), lines.end());
    for (const auto &entry : fs::directory_iterator(logs_))
        found.merge(numbersIn(readFile(entry.path())));
    return found.size() == 6;
}

// ---- The trials ----

void Power::trial(const char *label, bool exists, const std::string &earlier, bool byLink, int flags) {
    const fs::path report = reports_ / "report", link = system_ / "link";
    before_ = {{system_.log("19990301"), numberedLog(1, 4)}, {system_.log("19990302"), numberedLog(4, 7)}};
    names_.clear();
    calls_.clear();
    sizes_.clear();
    lay(before_);
    for (const auto &[path, contents] : before_) {
        names_[path] = static_cast<int>(sizes_.size());
        sizes_.push_back(contents.size());
    }
    if (exists) {
        writeFile(report, earlier);
        sizes_.push_back(0);
        change({Kind::Name, 2, report});
        change({Kind::Write, 2, report, "", 0, earlier});
        calls_.push_back({Kind::Sync, 2, report}); // the earlier run synced the contents
    }
    fs::remove(link);
    fs::create_symlink(report, link);
    const int output = flags != -1 ? open(report.c_str(), O_WRONLY | O_CLOEXEC | flags, 0644) : -1;
    std::vector<std::string> arguments = {"-d", "alpha"};
    if (output == -1)
        arguments = {"-d", "-o", byLink ? link : report, "alpha"};
    record(arguments, output, QVLEDGER_BINARY);
    close(output);
    const State after = present();
    if (after.size() != 1 || !after.contains(report) ||
        after != replay(calls_.size(), std::vector<bool>(calls_.size(), true))) {
        ++faults;
        std::printf("FAULT: %s: the run did not delete both logs, or made unknown calls\n", label);
    }
    cutEverywhere(label, [&](const State &state) {
        lay(state);
        if (!isKept(report))
            return false;
        system_.run({"-d", "-o", report, "alpha"}, {.environment = {{"QV_LOG", "none"}}});
        const std::multiset<int> lines = linesIn(readFile(report));
        return Numbers(lines.begin(), lines.end()).size() == 6; // the second run reports the rest
    });
}

void Power::trialOfSaving() {
    const fs::path copy = saved_ / "alpha.19990301";
    before_ = {{system_.log("19990301"), numberedLog(1, 4) + "damage"}};
    names_.clear();
    calls_.clear();
    lay(before_);
    names_[before_.begin()->first] = 0;
    sizes_ = {before_.begin()->second.size()};
    record({"-S", saved_, "alpha"}, -1, QVLEDGER_CHECK_BINARY);
    const std::string whole = numberedLog(1, 4);
    if (readFile(copy) != whole && ++faults != 0)
        std::printf("FAULT: the copy was not saved\n");
    cutEverywhere("copy of a damaged log",
                  [&](const State &state) { return !state.contains(copy) || state.at(copy) == whole; });
}

// With qvledger-json -c, a second run must write all records that did not survive.
void Power::trialSinceLastRun() {
    const fs::path report = reports_ / "report", state = saved_ / "state";
    before_ = {{system_.log("19990301"), numberedLog(1, 4)}, {system_.log("19990302"), numberedLog(4, 7)}};
    names_.clear();
    calls_.clear();
    lay(before_);
    sizes_.assign(before_.size(), 0);
    const std::vector<std::string> arguments = {"-c", state, "-o", report, "alpha"};
    record(arguments, -1, QVLEDGER_JSON_BINARY);
    if (readFile(state).find("alpha.19990302") == std::string::npos && ++faults != 0)
        std::printf("FAULT: the state was not saved\n");
    cutEverywhere("qvledger-json -c", [&](const State &cut) {
        lay(cut);
        system_.run(arguments, {.environment = {{"QV_LOG", "none"}}, .program = QVLEDGER_JSON_BINARY});
        return numbersIn(readFile(report)).size() == 6;
    });
}

int main() {
    Power power;
    power.trial("new report", false, "", false, -1);
    power.trial("empty report", true, "", false, -1);
    power.trial("report with lines", true, "earlier\n", false, -1);
    power.trial("report with half a line", true, "half", false, -1);
    power.trial("report made through a link", false, "", true, -1);
    power.trial("standard output, >", true, "", false, 0);
    power.trial("standard output, >>", true, "earlier\n", false, O_APPEND);
    power.trialOfSaving();
    power.trialSinceLastRun();
    std::printf("%u faults\n", power.faults);
    return power.faults == 0 ? 0 : 1;
}
