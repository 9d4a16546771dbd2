// Creates the folders and files of a print system's root:
//
//     registry.reg              the settings of its servers
//     share/oid/oids, oids.de   the OID tables
//     var/acct/SERVER.*         the accounting logs
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace samples {

struct RegistryKey {
    std::string path; // under HKEY_LOCAL_MACHINE
    std::vector<std::pair<std::string, std::string>> values;
};

// The key with a server's environment, and the key for servers without such a key.
std::string serverKey(std::string_view server);
std::string commonKey();

std::string registryText(const std::vector<RegistryKey> &keys);

class SampleRoot {
public:
    // Creates the folders and the OID tables.
    explicit SampleRoot(const std::filesystem::path &path);

    const std::filesystem::path &path() const { return folder_; } // absolute
    std::filesystem::path registry() const { return folder_ / "registry.reg"; }
    std::filesystem::path oids() const { return folder_ / "share/oid"; }
    std::filesystem::path logs() const { return folder_ / "var/acct"; }
    // tail: YYYYMMDD or "current"
    std::filesystem::path log(std::string_view server, std::string_view tail) const;

    // Writes the registry file.  The first form sets QV_ROOT to this root for the server and for all
    // other servers.
    void writeRegistry(std::string_view server) const;
    void writeRegistry(const std::vector<RegistryKey> &keys) const;

private:
    std::filesystem::path folder_;
};

} // namespace samples
