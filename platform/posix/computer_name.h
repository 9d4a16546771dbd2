// The computer's name, for whoever needs it in this layer.
#pragma once

#include <string>
#include <string_view>

namespace qvledger {

// The computer's name from a host name: up to the first dot, at most 15 characters.
std::string computerNameOf(std::string_view hostName);
std::string computerName();

} // namespace qvledger
