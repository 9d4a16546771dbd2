// Eight concurrent threads, each with its own server and handle, must not disturb each other.
//
//     threads [ROUNDS]      rounds of each thread (default 2000)
//
// In a round a thread saves its server's log, registers, lists the logs, reads its own log, deletes it and
// unregisters.  The results must equal those of a thread that runs alone.  Half of the servers have a root
// with German names.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>

#include "ala/ala.h"
#include "samples/log_writer.h"
#include "samples/sample_oids.h"
#include "samples/sample_root.h"
#include "tests/support/temp_dir.h"
#include "tests/support/value_cases.h"

using namespace samples;

constexpr unsigned kThreads = 8;
constexpr ALA_time kDay = {2001, 2, 3};
constexpr char kAllDone[] = "0 0 0 0 0 0 0 "; // the codes of a round without a failure

// Two jobs with values of every type.  The access list admits all users of the machine's domain.
static Log makeLog() {
    Job job;
    job.attribute(dotted("job-name"), TIME, {pack(Time{.year = 20000, .month = 1, .day = 1})}).document();
    for (const ValueCase &value : valueCases())
        if (value.code == ALA_N_NORMAL)
            job.attribute(dotted("job-comment"), value.type, {value.packed});
    AccessEntry entry = anyUserEntry();
    entry.domain.syntax = oid(DOMAIN_NT);
    return Log({.accessList = {pack(entry)}}).job(job).job(job);
}

template <class Record>
using Cursor = ALA_retCode_t(ALA_handle_t, Record *, const char *, ALA_attrPair **);

template <class Record>
static void addAttributes(ALA_handle_t handle, Record *record, Cursor<Record> *first, Cursor<Record> *next,
                          std::string &text) {
    ALA_attrPair *pair = nullptr;
    for (auto *get = first; get(handle, record, "de", &pair) == ALA_N_NORMAL; get = next) {
        text += pair->attrName;
        for (const attributeVal *value = pair->attrVal; value != nullptr; value = value->next)
            text.append("=").append(value->value);
        ALA_FreeAttributePair(&pair);
    }
}

static void addJobs(ALA_handle_t handle, ALA_acctLogHandle_t log, std::string &text) {
    ALA_record_t job = nullptr;
    auto *read = ALA_GetFirstJobRecord;
    for (; read(handle, &log, &job) == ALA_N_NORMAL; read = ALA_GetNextJobRecord) {
        addAttributes(handle, &job, ALA_GetFirstAttrFromJob, ALA_GetNextAttrFromJob, text);
        ALA_dRecord_t document = nullptr;
        ALA_GetFirstDocmt(handle, &job, &document);
        addAttributes(handle, &document, ALA_GetFirstAttrFromDoc, ALA_GetNextAttrFromDoc, text);
        ALA_FreeDocmtRecord(&document);
        ALA_FreeJobRecord(&job);
    }
}

// Plays a round.  Returns the codes of the operations, and all texts that were read from the log.
static std::string playRound(const std::string &server, const SampleRoot &root, const Log &logName) {
    logName.save(root.log(server, "20010203"));
    ALA_handle_t handle = nullptr;
    dateNode *dates = nullptr;
    ALA_name *names = nullptr;
    ALA_acctLogHandle_t log = nullptr;
    std::string codes, text;
    const auto note = [&](ALA_retCode_t code) { codes += std::to_string(code) + ' '; };
    note(ALA_Register(server.c_str(), root.logs().c_str(), nullptr, &handle));
    note(ALA_ListExistingLogsByDate(handle, &dates, &names));
    note(ALA_Open(handle, &kDay, &log));
    addJobs(handle, log, text);
    note(ALA_Close(handle, &log));
    note(ALA_Delete(handle, &kDay));
    note(ALA_FreeDateList(&dates) + ALA_FreeNameList(&names));
    note(ALA_Unregister(&handle));
    return codes + text;
}

int main(int argc, char **argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 2000;
    const TempDir folder;
    const SampleRoot roots[] = {SampleRoot(folder / "0"), SampleRoot(folder / "1")};
    std::filesystem::remove(roots[1].oids() / "oids.de");
    std::vector<RegistryKey> keys; // every other server removes QV_HALF, which precedes TZ in the environment
    for (unsigned i = 0; i < kThreads; ++i)
        keys.push_back({serverKey(std::to_string(i)),
                        {{"QV_HALF", i % 2 == 0 ? "" : "1"}, {"QV_ROOT", roots[i % 2].path()}}});
    roots[0].writeRegistry(keys);
    setenv("QV_HALF", "1", 1);
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    setenv("QV_LOG", (folder / "log").c_str(), 1);
    setenv("QV_REGISTRY", roots[0].registry().c_str(), 1);

    const Log log = makeLog();
    const auto play = [&](unsigned number) {
        return playRound(std::to_string(number), roots[number % 2], log);
    };
    std::map<std::string, int> results[kThreads]; // how often each thread had each result
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round)
                ++results[i][play(i)];
        });
    for (std::thread &thread : threads)
        thread.join();

    int wrong = 0;
    for (unsigned i = 0; i < kThreads; ++i)
        for (const auto &[text, times] : results[i])
            if (const std::string alone = play(i); text != alone || !alone.starts_with(kAllDone)) {
                std::printf("server %u, %d times: %.80s\n", i, times, text.c_str());
                wrong += times;
            }
    std::printf("%u threads, %d rounds each: %d wrong\n", kThreads, rounds, wrong);
    return wrong == 0 ? 0 : 1;
}
