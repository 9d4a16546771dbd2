#include "samples/callers_account.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace samples {

std::string computerName() {
    constexpr std::size_t kLongestName = 15;
    char host[256] = "";
    if (gethostname(host, sizeof host - 1) != 0)
        throw std::system_error(errno, std::generic_category(), "gethostname");
    std::string name = host;
    name.resize(std::min({name.find('.'), name.size(), kLongestName}));
    for (char &letter : name)
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    return name;
}

AccountName accountName(const std::string &full) {
    if (const auto backslash = full.find('\\'); backslash != std::string::npos)
        return {full.substr(backslash + 1), full.substr(0, backslash)};
    if (const auto at = full.find('@'); at != std::string::npos)
        return {full.substr(0, at), full.substr(at + 1)};
    return {full, computerName()};
}

static std::vector<gid_t> groupIds() {
    std::vector<gid_t> ids(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
    const int count = getgroups(static_cast<int>(ids.size()), ids.data());
    ids.resize(static_cast<std::size_t>(std::max(count, 0)));
    std::erase(ids, getgid());
    ids.insert(ids.begin(), getgid());
    return ids;
}

Account callersAccount() {
    const passwd *entry = getpwuid(getuid());
    if (entry == nullptr)
        throw std::runtime_error("user id " + std::to_string(getuid()) + " has no account");
    const std::vector<gid_t> ids = groupIds();
    Account account{.user = accountName(entry->pw_name), .groups = {}, .groupIds = ids.size()};
    for (const gid_t id : ids)
        if (const group *named = getgrgid(id))
            account.groups.push_back(accountName(named->gr_name));
    return account;
}

} // namespace samples
