// The registry keys that the facility reads.
#pragma once

#include <cstddef>

namespace qvledger {

// The settings of the server NAME are the values of the following key.  If that key cannot be opened, they
// are the values of the common key (kCommonEnvironmentKey).
//     SYSTEM\CurrentControlSet\Services\qv spl NAME\Environment
constexpr char kServicesKey[] = "SYSTEM\\CurrentControlSet\\Services\\";
constexpr char kSpoolerPrefix[] = "qv spl ";
constexpr char kEnvironmentKey[] = "\\Environment";
constexpr char kCommonEnvironmentKey[] = "SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment";

constexpr std::size_t kSettingSize = 260; // maximum bytes of a setting's name with its NUL, and of its data

constexpr char kLogonDeviceKey[] = "System\\CurrentControlSet\\Enum\\Root\\LEGACY_NETLOGON\\0000";

} // namespace qvledger
