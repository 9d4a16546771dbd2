// Preparations for a registration: loads a server's settings from the registry, and looks up the machine's
// domain.
#pragma once

#include <cstdint>

namespace qvledger {

// Server types for ALA__GetServiceName.
constexpr std::uint32_t kServerTypeSpooler = 892;
constexpr std::uint32_t kServerTypeOther = 893;

// Looks up the machine's domain with the rights that the process has now.  Without this call, the first
// registration looks up the domain.
void findHostDomain();

} // namespace qvledger

// Sets *outpp_serviceName to the name of a server's service, a new text that the calling function releases
// with free.  Returns 0.  If the type is unknown, the address is null or memory runs out, returns -1 and sets
// the text to null.
std::int32_t ALA__GetServiceName(const char *inp_serverName, std::uint32_t in_serverType,
                                 char **outpp_serviceName);

// Copies the values of the service's registry key into the environment of the process; values with invalid
// names are ignored.  If that key cannot be opened, copies the values of the common key.  Returns 0.  If
// neither key can be opened, a value cannot be read or is too long, or memory runs out, returns -1; variables
// that are already set remain set.
std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName);
