// Measures stages of an attribute's path from the log to the report, to locate a change of speed.
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "ala/ala.h"
#include "ala/base/record.h"
#include "ala/render/pair.h"
#include "samples/log_writer.h"
#include "samples/sample_oids.h"
#include "samples/sample_root.h"
#include "service/oid/oid.h"
#include "service/status.h"

using namespace samples;
using namespace qvledger;
namespace fs = std::filesystem;

constexpr int kAttributes = 20;

namespace {

// A root with one log, whose records have 20 string attributes.
class Bench {
public:
    explicit Bench(int records) : root(fs::temp_directory_path() / ("bench-" + std::to_string(getpid()))) {
        Log log;
        for (int record = 0; record < records; ++record) {
            Job job;
            for (int i = 0; i < kAttributes; ++i)
                job.attribute(dotted("job-name"), kCharacters, {packString("annual report of the north")});
            log.job(job);
        }
        log.save(root.log("alpha", "20010101"));
        if (ALA_Register("alpha", root.logs().c_str(), root.oids().c_str(), &handle) != ALA_N_NORMAL)
            throw std::runtime_error("no registration");
    }
    ~Bench() {
        ALA_Unregister(&handle);
        fs::remove_all(root.path());
    }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    static constexpr AS_attrValType_t kCharacters = 14;

    SampleRoot root;
    ALA_handle_t handle = nullptr;
};

} // namespace

static void readRecords(benchmark::State &state) {
    constexpr int kRecords = 1000;
    const Bench bench(kRecords);
    const ALA_time date = {2001, 1, 1};
    for (auto _ : state) {
        ALA_acctLogHandle_t log = nullptr;
        ALA_record_t record = nullptr;
        if (ALA_Open(bench.handle, &date, &log) != ALA_N_NORMAL)
            return state.SkipWithError("the log does not open");
        ALA_retCode_t result = ALA_GetFirstJobRecord(bench.handle, &log, &record);
        for (; result == ALA_N_NORMAL; result = ALA_GetNextJobRecord(bench.handle, &log, &record))
            ALA_FreeJobRecord(&record);
        ALA_Close(bench.handle, &log);
    }
    state.SetItemsProcessed(state.iterations() * kRecords * kAttributes);
}
BENCHMARK(readRecords);

// Measures the unpacking of one value.
static void unpack(benchmark::State &state, AS_attrValType_t type, const Bytes &packed) {
    const StatusList status;
    for (auto _ : state) {
        void *value = nullptr;
        AS_attrValDesc_t description;
        if (ODP_UnpackAV(status, static_cast<std::int32_t>(packed.size()), packed.data(), type, &value,
                         &description) != 0)
            return state.SkipWithError("the value is refused");
        description.deleteFunc(status, value, nullptr);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(unpack, characters, Bench::kCharacters, packString("annual report of the north"));
BENCHMARK_CAPTURE(unpack, time, 48, pack(Time{2024, 2, 29, 12, 30, 1, 5, 0, 0}));

static void lookUpName(benchmark::State &state) {
    const Bench bench(1);
    void *database = nullptr;
    const StatusList status;
    OID_Init(status, bench.root.oids().c_str(), 0);
    if (OID_OpenDb(status, bench.root.oids().c_str(), 0, 0, &database) != 0)
        return state.SkipWithError("the table does not open");
    std::uint8_t oid[OID_BINARY_SIZE];
    OID_ConvertDecToBin(status, dotted("job-name").c_str(), oid, 0);
    char name[OID_NAME_SIZE];
    for (auto _ : state)
        benchmark::DoNotOptimize(OID_LookupBinary(status, database, oid, name, 0));
    OID_CloseDb(status, &database);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(lookUpName);

// Measures the unpacking, naming and rendering of a record's attributes.
static void deliverAttributes(benchmark::State &state) {
    const Bench bench(1);
    const ALA_time date = {2001, 1, 1};
    ALA_acctLogHandle_t log = nullptr;
    ALA_record_t record = nullptr;
    if (ALA_Open(bench.handle, &date, &log) != ALA_N_NORMAL ||
        ALA_GetFirstJobRecord(bench.handle, &log, &record) != ALA_N_NORMAL)
        return state.SkipWithError("there is no record");
    for (auto _ : state) {
        ALA_attrPair *pair = nullptr;
        ALA_retCode_t result = ALA_GetFirstAttrFromJob(bench.handle, &record, nullptr, &pair);
        for (; result == ALA_N_NORMAL; result = ALA_GetNextAttrFromJob(bench.handle, &record, nullptr, &pair))
            ALA_FreeAttributePair(&pair);
    }
    state.SetItemsProcessed(state.iterations() * kAttributes);
    ALA_FreeJobRecord(&record);
    ALA_Close(bench.handle, &log);
}
BENCHMARK(deliverAttributes);
