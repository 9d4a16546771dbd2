#include "platform/os.h"

#include <cstdlib>

#include <unistd.h>

namespace {

struct Ids {
    uid_t user;
    gid_t group;
};

} // namespace

// The effective and the real ids at the program's start.
static const Ids kLent = {geteuid(), getegid()};
static const Ids kCallers = {getuid(), getgid()};

static void use(const Ids &ids) {
    if (getegid() != ids.group && setegid(ids.group) != 0)
        std::abort();
    if (geteuid() != ids.user && seteuid(ids.user) != 0)
        std::abort();
}

int OS_HasLentRights() {
    return kLent.user != kCallers.user || kLent.group != kCallers.group ? 1 : 0;
}

void OS_UseCallersRights() {
    use(kCallers);
}

void OS_UseLentRights() {
    use(kLent);
}
