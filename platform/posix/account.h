// Accounts and groups of the machine, as its name service knows them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

// "DOMAIN\name" and "name@domain" taken apart; any other name has an empty domain.
struct AccountName {
    std::string name;
    std::string domain;
};
AccountName splitAccountName(std::string_view in_full);

// The computer's name from a host name: up to the first dot, at most 15 characters.
std::string computerNameOf(std::string_view in_hostName);
std::string computerName();

struct Account {
    uid_t id;
    AccountName name;
};

// Nothing when there is no such account or group.
std::optional<Account> accountOfId(uid_t in_id);
std::optional<Account> accountOfName(const std::string &in_name);
std::optional<AccountName> groupOfId(gid_t in_id);
