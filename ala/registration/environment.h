// Set-up before a registration: a server's settings in the registry, and the machine's domain.
#pragma once

#include <cstdint>

namespace qvledger {

// Server types for ALA__GetServiceName.
constexpr std::uint32_t kServerTypeSpooler = 892;
constexpr std::uint32_t kServerTypeOther = 893;

// Looks the machine's domain up, once per process, with the current rights.  A registration does it
// otherwise.
void findHostDomain();

} // namespace qvledger

// Returns the name of a server's service as a new text, which the caller releases with free.  0, or -1 and a
// null text for an unknown type, a null address or when memory runs out.
std::int32_t ALA__GetServiceName(const char *inp_serverName, std::uint32_t in_serverType,
                                 char **outpp_serviceName);

// Copies every value of the service's registry key, or of the common key if the service has none, into the
// environment of the process.  0, or -1 if neither key can be opened, a value does not fit or memory runs
// out; variables set before the failure remain set.
std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName);
