// Accounts, with names as in access lists.
#pragma once

#include <string>
#include <vector>

namespace samples {

struct AccountName {
    std::string name;
    std::string domain; // the computer's name if the system names no other domain
};

struct Account {
    AccountName user;
    std::vector<AccountName> groups; // the groups that have a name; on Linux, the real group first
    std::size_t groupIds = 0;        // number of groups, with and without a name
};

// The computer's name; on Linux, the host name up to its first dot, in upper case, at most 15 characters.
// Throws std::system_error.
std::string computerName();

// The name and domain of a user or group.  On Linux, the domain is that in DOMAIN\NAME or NAME@DOMAIN, or
// else the computer's name.  On Windows, the account must exist; throws std::system_error if it does not.
AccountName accountName(const std::string &full);

// The account of the current user; on Linux, of the real user id.  Throws std::runtime_error on failure.
Account callersAccount();

} // namespace samples
