#include "platform/posix/account.h"

#include <cerrno>
#include <vector>

#include <grp.h>
#include <pwd.h>
#include <sys/utsname.h>

constexpr std::size_t kComputerNameLength = 15;
constexpr std::size_t kFirstRoom = 4096;
constexpr std::size_t kMostRoom = std::size_t{64} << 20; // more than the largest group takes

AccountName splitAccountName(std::string_view in_full) {
    const std::size_t slash = in_full.find('\\');
    if (slash != std::string_view::npos && slash > 0 && slash + 1 < in_full.size())
        return {std::string(in_full.substr(slash + 1)), std::string(in_full.substr(0, slash))};
    const std::size_t at = in_full.rfind('@');
    if (at != std::string_view::npos && at > 0 && at + 1 < in_full.size())
        return {std::string(in_full.substr(0, at)), std::string(in_full.substr(at + 1))};
    return {std::string(in_full), ""};
}

std::string computerNameOf(std::string_view in_hostName) {
    return std::string(in_hostName.substr(0, in_hostName.find('.')).substr(0, kComputerNameLength));
}

std::string computerName() {
    utsname system;
    return uname(&system) == 0 ? computerNameOf(system.nodename) : "";
}

// Runs one of the C library's reentrant look-ups, with more room as long as the entry does not fit.  The
// answer is what in_take makes of the entry.
template <class Entry, class Lookup, class Take>
static auto lookUp(Lookup in_lookup, Take in_take) -> std::optional<decltype(in_take(Entry{}))> {
    for (std::vector<char> room(kFirstRoom); room.size() <= kMostRoom;) {
        Entry entry;
        Entry *found = nullptr;
        const int error = in_lookup(&entry, room.data(), room.size(), &found);
        if (error == ERANGE)
            room.resize(room.size() * 2);
        else if (error != EINTR)
            return found != nullptr ? std::optional(in_take(*found)) : std::nullopt;
    }
    return std::nullopt;
}

static Account accountOf(const passwd &entry) {
    return {entry.pw_uid, splitAccountName(entry.pw_name)};
}

std::optional<Account> accountOfId(uid_t in_id) {
    return lookUp<passwd>([&](passwd *entry, char *room, std::size_t size,
                              passwd **found) { return getpwuid_r(in_id, entry, room, size, found); },
                          accountOf);
}

std::optional<Account> accountOfName(const std::string &in_name) {
    return lookUp<passwd>(
        [&](passwd *entry, char *room, std::size_t size, passwd **found) {
            return getpwnam_r(in_name.c_str(), entry, room, size, found);
        },
        accountOf);
}

std::optional<AccountName> groupOfId(gid_t in_id) {
    return lookUp<group>([&](group *entry, char *room, std::size_t size,
                             group **found) { return getgrgid_r(in_id, entry, room, size, found); },
                         [](const group &entry) { return splitAccountName(entry.gr_name); });
}
