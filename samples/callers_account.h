// Who the calling user is, as the access list of a log names him.
#pragma once

#include <string>
#include <vector>

namespace samples {

struct AccountName {
    std::string name;
    std::string domain; // of "DOMAIN\name" and "name@domain"; otherwise the computer's name
};

struct Account {
    AccountName user;
    std::vector<AccountName> groups; // those with a name, the real group first
    std::size_t groupIds = 0;        // with and without a name
};

// The host name up to its first dot, of at most 15 characters.
std::string computerName();

// The account of the real user id; throws std::runtime_error when it has none.
Account callersAccount();

} // namespace samples
