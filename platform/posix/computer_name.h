// The computer's name, for the calls of platform/posix/.
#pragma once

#include <string>
#include <string_view>

namespace qvledger {

// The computer's name for a host name: up to its first dot, at most 15 characters, in capitals.
std::string computerNameOf(std::string_view hostName);
std::string computerName();

} // namespace qvledger
