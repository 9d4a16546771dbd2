// The accounts and groups in the machine's name service.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace qvledger {

// The parts of "DOMAIN\name" or "name@domain"; any other name has an empty domain.
struct AccountName {
    std::string name;
    std::string domain;
};
AccountName splitAccountName(std::string_view full);

struct Account {
    uid_t id;
    AccountName name;
};

// Look up an account or group; nothing if it does not exist or the look-up fails.
std::optional<Account> accountOfId(uid_t id);
std::optional<Account> accountOfName(const std::string &name);
std::optional<AccountName> groupOfId(gid_t id);

} // namespace qvledger
