// Accounts and groups of the machine, as its name service knows them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace qvledger {

// "DOMAIN\name" and "name@domain" taken apart; any other name has an empty domain.
struct AccountName {
    std::string name;
    std::string domain;
};
AccountName splitAccountName(std::string_view full);

struct Account {
    uid_t id;
    AccountName name;
};

// Nothing when there is no such account or group.
std::optional<Account> accountOfId(uid_t id);
std::optional<Account> accountOfName(const std::string &name);
std::optional<AccountName> groupOfId(gid_t id);

} // namespace qvledger
