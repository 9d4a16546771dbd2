#include "tests/support/temp_dir.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

TempDir::TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "qvledger-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    folder_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string readFile(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
