// The accounts and groups in the machine's name service.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace qvledger {

// Splits "DOMAIN\name" and "name@domain"; any other name has an empty domain.
struct AccountName {
    std::string name;
    std::string domain;
};
AccountName splitAccountName(std::string_view full);

struct Account {
    uid_t id;
    AccountName name;
};

// Look-ups; nothing if there is no such account or group.
std::optional<Account> accountOfId(uid_t id);
std::optional<Account> accountOfName(const std::string &name);
std::optional<AccountName> groupOfId(gid_t id);

} // namespace qvledger
