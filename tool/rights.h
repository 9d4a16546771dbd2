// The rights that a set-group-id installation lends.
//
// The program runs with its user's own rights.  It uses the lent rights only to read the system's registry
// file and OID database, to find the host's domain, to list and open the logs in the system's own directory,
// where each log's access list decides, and to compare the folder of -S with the log directory.
// docs/security.md explains why.
#pragma once

#include "ala/driver/session.h"
#include "platform/os.h"

namespace qvledger {

// Drops the lent rights until LentRights uses them.  Call this function when the program starts.  With lent
// rights, also removes QV_ROOT, so that the root comes from the registry and not from the user.
inline void dropLentRights() {
    if (OS_HasLentRights() != 0)
        static_cast<void>(_putenv("QV_ROOT=")); // an empty value removes a variable
    OS_UseCallersRights();
}

// Uses the lent rights within a block, if the path used in the block is the system's own.
class LentRights {
public:
    explicit LentRights(bool pathIsTheSystems) {
        if (pathIsTheSystems)
            OS_UseLentRights();
    }
    ~LentRights() { OS_UseCallersRights(); }
    LentRights(const LentRights &) = delete;
    LentRights &operator=(const LentRights &) = delete;
};

// Finds the host's domain with lent rights, whatever paths the user names.  The result is kept, so the
// registration does not look again.  Without lent rights, does nothing: the registration finds the domain.
inline void findDomainWithLentRights() {
    if (OS_HasLentRights() == 0)
        return;
    const LentRights rights(true);
    findHostDomain();
}

} // namespace qvledger
