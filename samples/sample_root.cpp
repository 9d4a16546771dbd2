#include "samples/sample_root.h"

#include "samples/output_file.h"
#include "samples/sample_oids.h"

namespace samples {

namespace fs = std::filesystem;

std::string serverKey(std::string_view server) {
    return "SYSTEM\\CurrentControlSet\\Services\\qv spl " + std::string(server) + "\\Environment";
}

std::string commonKey() {
    return "SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment";
}

static std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + '"';
}

std::string registryText(const std::vector<RegistryKey> &keys) {
    std::string text = "Windows Registry Editor Version 5.00\n";
    for (const RegistryKey &key : keys) {
        text += "\n[HKEY_LOCAL_MACHINE\\" + key.path + "]\n";
        for (const auto &[name, data] : key.values)
            text += inQuotes(name) + '=' + inQuotes(data) + '\n';
    }
    return text;
}

SampleRoot::SampleRoot(const fs::path &path) {
    fs::create_directories(path);
    folder_ = fs::canonical(path);
    fs::create_directories(oids());
    fs::create_directories(logs());
    writeFile(oids() / "oids", oidTable());
    writeFile(oids() / "oids.de", germanOidTable());
}

fs::path SampleRoot::log(std::string_view server, std::string_view tail) const {
    return logs() / (std::string(server) + '.' + std::string(tail));
}

void SampleRoot::writeRegistry(std::string_view server) const {
    const std::pair<std::string, std::string> root{"QV_ROOT", folder_.string()};
    writeRegistry({{serverKey(server), {root}}, {commonKey(), {root}}});
}

void SampleRoot::writeRegistry(const std::vector<RegistryKey> &keys) const {
    writeFile(registry(), registryText(keys));
}

} // namespace samples
