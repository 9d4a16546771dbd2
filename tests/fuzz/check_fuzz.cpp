// Checks and saves a log.  If the log has no damage, the copy must be identical.  Otherwise a check of the
// copy must find as many records and no damage.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "ala/driver/check.h"
#include "tests/fuzz/sandbox.h"

namespace {

class Watch final : public qvledger::CheckWatch {
    bool goOn(std::int64_t) override { return true; }
    void record() override {}
    void stray(std::int64_t begin, std::int64_t end, qvledger::FoundNext) override {
        if (begin >= end)
            std::abort();
    }
};

} // namespace

static bool check(ALA_handle_t handle, const char *name, const char *copy, qvledger::LogSummary &summary) {
    using enum qvledger::CheckOutcome;
    Watch watch;
    qvledger::OpenCheckedLog log;
    if (openToCheck(handle, name, log).outcome != Done)
        return false;
    if (checkLog(handle, *log, watch, summary).outcome != Done)
        std::abort();
    if (copy != nullptr && saveLog(*log, copy, watch).outcome != Done)
        std::abort();
    return true;
}

static bool isSameByte(char saved, std::uint8_t byte) {
    return static_cast<std::uint8_t>(saved) == byte;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    const ALA_handle_t handle = sandbox.handle();
    Sandbox::write(sandbox.root().log("alpha", "20010203"), {bytes, size});
    const std::filesystem::path copy = sandbox.root().log("alpha", "20010204");
    std::filesystem::remove(copy);
    qvledger::LogSummary first, second;
    if (!check(handle, "alpha.20010203", copy.c_str(), first))
        return 0;
    if (first.strayBytes == 0) {
        std::ifstream saved(copy, std::ios::binary);
        if (!std::equal(std::istreambuf_iterator<char>(saved), {}, bytes, bytes + size, isSameByte))
            std::abort();
        return 0;
    }
    if (!check(handle, "alpha.20010204", nullptr, second) || second.strayBytes != 0 ||
        second.records != first.records || second.bytes + first.strayBytes != first.bytes)
        std::abort();
    return 0;
}
