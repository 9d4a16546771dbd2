// What is set up before a registration.
#pragma once

#include <cstdint>

namespace qvledger {

// The service environment: the settings that a server's service has in the registry, copied into the process.
constexpr std::uint32_t kServerTypeSpooler = 892;
constexpr std::uint32_t kServerTypeOther = 893;

// Finds the machine's domain, once for the process, with the rights in force.  Otherwise a registration does.
void findHostDomain();

} // namespace qvledger

// The name of a server's service, a new text released with free.  0, or -1 for an unknown type, a null
// address or exhausted memory; the text is null then.
std::int32_t ALA__GetServiceName(const char *inp_serverName, std::uint32_t in_serverType,
                                 char **outpp_serviceName);

// Copies every value of the service's registry key, or of the system's one if the service has none, into the
// process environment.  0, or -1 when neither key opens, a value does not fit or memory runs out; variables
// set before that stay set.
std::int32_t ALA__SetEnvironmentVariables(const char *inp_serviceName);
