// The groups of the user who runs the process.
#pragma once

#include <cstddef>

#include "ala/access/credential.h"

// A group in a list of groups.
struct ALA_groupSIDList {
    char *user;       // the group's name
    char *domainName; // the group's domain; the computer's name for a local group
    ALA_groupSIDList *next;
};

// Creates the list of the user's groups unless the list already contains groups.  Returns 0, or 1 and an
// empty list on failure.
std::int32_t _ALA_CreateGroupSIDList(const ALA_credential_t *inp_credential,
                                     ALA_groupSIDList **inoutpp_gSidList);
// Releases the list and sets *inoutpp_gSidList to null.  Always returns 0.
std::int32_t ALA__ClearGroupSIDList(ALA_groupSIDList **inoutpp_gSidList);

namespace qvledger {

// Does the list contain the group `name` of `domain`, ignoring case?  name need not be NUL-terminated.
bool isListed(const ALA_groupSIDList *list, const char *name, std::size_t nameLength, const char *domain);

} // namespace qvledger
