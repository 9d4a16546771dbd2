// A whole log that is checked and saved.  A log without damage is saved byte for byte; of any other, a check
// of what was saved finds the same records and no damage.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "ala/driver/check.h"
#include "tests/fuzz/sandbox.h"

namespace {

class Watch final : public ALA__checkWatch {
    bool goOn(std::int64_t) override { return true; }
    void record() override {}
    void stray(std::int64_t begin, std::int64_t end) override {
        if (begin >= end)
            std::abort();
    }
};

} // namespace

static bool check(ALA_handle_t handle, const char *name, const char *copy, ALA__logSummary &summary) {
    Watch watch;
    ALA__checkedLog *log = nullptr;
    if (ALA__OpenToCheck(handle, name, &log) != ALA_N_NORMAL)
        return false;
    if (ALA__CheckLog(handle, log, watch, &summary) != ALA_N_NORMAL)
        std::abort();
    if (copy != nullptr && ALA__SaveLog(log, copy, watch) != ALA_N_NORMAL)
        std::abort();
    ALA__CloseChecked(log);
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
    ALA__logSummary first, second;
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
