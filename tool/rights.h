// The rights that a set-group-id installation lends.
//
// The program runs with its caller's own rights.  What it was lent serves only to read the system's registry
// file and OID database and to list and open the logs in the system's own directory, where each log's access
// list decides. docs/security.md tells why.
#pragma once

#include "ala/driver/session.h"
#include "platform/os.h"

namespace qvledger {

// First of all.  The root of the print system is then the registry's alone, never one of the caller's choice.
inline void dropLentRights() {
    if (OS_HasLentRights() != 0)
        static_cast<void>(_putenv("QV_ROOT=")); // an empty value removes a variable
    OS_UseCallersRights();
}

// Uses what was lent for the length of a block, if the path used there is the system's own.
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

// The machine's domain is the system's to tell, whatever paths the caller names.  Found here once, it stays
// what it is; without lent rights the registration finds it.
inline void findDomainWithLentRights() {
    if (OS_HasLentRights() == 0)
        return;
    const LentRights rights(true);
    findHostDomain();
}

} // namespace qvledger
