// Runs a target on kept inputs, to detect that a fixed fault has returned.  An input may take one
// second, and an input above a megabyte one second per megabyte.
//
//     replay_TARGET FILE-OR-FOLDER...
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/fuzz/sandbox.h"

static bool replay(const std::filesystem::path &file) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    const auto start = std::chrono::steady_clock::now();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double allowed = std::max(1.0, static_cast<double>(bytes.size()) / 1e6);
    if (seconds > allowed)
        std::printf("%s took %.1f s\n", file.c_str(), seconds);
    return seconds <= allowed;
}

int main(int argc, char **argv) {
    int files = 0;
    int slow = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path place = std::filesystem::absolute(argv[i]);
        std::vector<std::filesystem::path> found = {place};
        if (std::filesystem::is_directory(place))
            found.assign(std::filesystem::directory_iterator(place), std::filesystem::directory_iterator());
        for (const auto &file : found) {
            ++files;
            slow += replay(file) ? 0 : 1;
        }
    }
    std::printf("%d inputs replayed, %d too slow\n", files, slow);
    return files > 0 && slow == 0 ? 0 : 1;
}
