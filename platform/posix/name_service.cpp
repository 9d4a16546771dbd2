#include "platform/posix/name_service.h"

#include <cerrno>
#include <vector>

#include <grp.h>
#include <pwd.h>

using namespace qvledger;

constexpr std::size_t kFirstRoom = 4096;
constexpr std::size_t kMostRoom = std::size_t{64} << 20; // more than the largest group needs

AccountName qvledger::splitAccountName(std::string_view full) {
    const std::size_t slash = full.find('\\');
    if (slash != std::string_view::npos && slash > 0 && slash + 1 < full.size())
        return {std::string(full.substr(slash + 1)), std::string(full.substr(0, slash))};
    const std::size_t at = full.rfind('@');
    if (at != std::string_view::npos && at > 0 && at + 1 < full.size())
        return {std::string(full.substr(0, at)), std::string(full.substr(at + 1))};
    return {std::string(full), ""};
}

// Runs a reentrant look-up of the C library, and enlarges the room until the entry fits.  Returns
// take(entry), or nothing if there is no entry or the look-up fails.
template <class Entry, class Lookup, class Take>
static auto lookUp(Lookup call, Take take) -> std::optional<decltype(take(Entry{}))> {
    for (std::vector<char> room(kFirstRoom); room.size() <= kMostRoom;) {
        Entry entry;
        Entry *found = nullptr;
        const int error = call(&entry, room.data(), room.size(), &found);
        if (error == ERANGE)
            room.resize(room.size() * 2);
        else if (error != EINTR)
            return found != nullptr ? std::optional(take(*found)) : std::nullopt;
    }
    return std::nullopt;
}

static Account accountOf(const passwd &entry) {
    return {entry.pw_uid, splitAccountName(entry.pw_name)};
}

std::optional<Account> qvledger::accountOfId(uid_t id) {
    return lookUp<passwd>([&](passwd *entry, char *room, std::size_t size,
                              passwd **found) { return getpwuid_r(id, entry, room, size, found); },
                          accountOf);
}

std::optional<Account> qvledger::accountOfName(const std::string &name) {
    return lookUp<passwd>([&](passwd *entry, char *room, std::size_t size,
                              passwd **found) { return getpwnam_r(name.c_str(), entry, room, size, found); },
                          accountOf);
}

std::optional<AccountName> qvledger::groupOfId(gid_t id) {
    return lookUp<group>([&](group *entry, char *room, std::size_t size,
                             group **found) { return getgrgid_r(id, entry, room, size, found); },
                         [](const group &entry) { return splitAccountName(entry.gr_name); });
}
