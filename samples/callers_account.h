// The account of the calling user, with names as in access lists.
#pragma once

#include <string>
#include <vector>

namespace samples {

struct AccountName {
    std::string name;
    std::string domain; // from "DOMAIN\name" or "name@domain"; otherwise the computer's name
};

struct Account {
    AccountName user;
    std::vector<AccountName> groups; // the groups that have a name, the real group first
    std::size_t groupIds = 0;        // number of groups, with and without a name
};

// The host name up to its first dot, in upper case, at most 15 characters.
std::string computerName();

// The account of the real user id.  Throws std::runtime_error if the user id has no account.
Account callersAccount();

} // namespace samples
