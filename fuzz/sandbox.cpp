#include "fuzz/sandbox.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

static std::filesystem::path makeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "qvledger-fuzz-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    return name;
}

Sandbox::Sandbox() : folder(makeFolder()), tree(folder) {
    setenv("QV_LOG", "none", 1);
    setenv("QV_REGISTRY", tree.registry().c_str(), 1);
    setenv("TZ", "UTC", 1);
    tree.writeRegistry("alpha");
}

Sandbox::~Sandbox() {
    std::error_code ignored; // what is left is the system's to sweep
    std::filesystem::remove_all(folder, ignored);
}

void Sandbox::write(const std::filesystem::path &file, std::span<const std::uint8_t> bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}
