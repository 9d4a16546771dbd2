// Where the registry has the settings of servers, and what else the facility reads from it.
#pragma once

#include <cstddef>

namespace qvledger {

// A server's settings are the values of the key that is made of the first three texts with the server's name
// before the third one; or, if there is no such key, those of the common one.
constexpr char kServicesKey[] = "SYSTEM\\CurrentControlSet\\Services\\";
constexpr char kSpoolerPrefix[] = "qv spl ";
constexpr char kEnvironmentKey[] = "\\Environment";
constexpr char kCommonEnvironmentKey[] = "SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment";

constexpr std::size_t kSettingSize = 260; // bytes that a setting's name may take, and its data

constexpr char kLogonDeviceKey[] = "System\\CurrentControlSet\\Enum\\Root\\LEGACY_NETLOGON\\0000";

} // namespace qvledger
