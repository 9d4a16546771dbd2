// The computer's name, for the calls of platform/posix/.
#pragma once

#include <string>
#include <string_view>

namespace qvledger {

// Makes the computer's name from a host name: the part up to the first dot, at most 15 characters, in
// capitals.
std::string computerNameOf(std::string_view hostName);
// The name of this computer; empty if the system reports none.
std::string computerName();

} // namespace qvledger
