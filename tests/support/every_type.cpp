// every_type DIR: creates the root of a print system for scripts/check-schema.  The logs of its server alpha
// contain values of every type.  The name of each attribute is "type-" and the number of its value type.
#include "ala/ala.h"
#include "samples/log_writer.h"
#include "samples/sample_oids.h"
#include "samples/sample_root.h"
#include "tests/support/value_cases.h"

using namespace samples;

constexpr std::uint32_t kTypes = 100; // includes numbers that are no value types

static std::string oidOf(std::uint32_t type) {
    return "1.3.6.1.4.1.32473.99." + std::to_string(type);
}

int main(int argc, char **argv) {
    if (argc != 2)
        return 1;
    const SampleRoot root(argv[1]);
    root.writeRegistry("alpha");
    std::string oids(oidTable());
    Job withoutValues;
    for (std::uint32_t type = 0; type < kTypes; ++type) {
        oids += oidOf(type) + "\t0\t20\ttype-" + std::to_string(type) + '\n';
        withoutValues.attribute(oidOf(type), type);
    }
    writeFile(root.oids() / "oids", oids);
    Log log;
    log.job(withoutValues);
    for (const ValueCase &value : valueCases()) {
        if (value.code == ALA_A_FAIL_TO_GET_TIME)
            continue; // only ISO 8601 can express this time
        const std::string oid = oidOf(value.type);
        log.job(Job()
                    .attribute(oid, value.type, {value.packed})
                    .document()
                    .attribute(oid, value.type, {value.packed, value.packed}));
    }
    log.save(root.log("alpha", "20260101"));
    log.cutTo(log.size() - 1).save(root.log("alpha", "20260102"));
}
