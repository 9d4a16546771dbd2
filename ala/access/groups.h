// The groups of the calling process.
#pragma once

#include <cstddef>

#include "ala/access/credential.h"

// A group of the caller.
struct ALA_groupSIDList {
    char *user;       // the group's name
    char *domainName; // the group's domain
    ALA_groupSIDList *next;
};

// Creates the list of groups; does nothing if the list is not empty.  0, or 1 with an empty list.
std::int32_t _ALA_CreateGroupSIDList(const ALA_credential_t *inp_credential,
                                     ALA_groupSIDList **inoutpp_gSidList);
// Releases the list and sets it to null.  Always 0.
std::int32_t ALA__ClearGroupSIDList(ALA_groupSIDList **inoutpp_gSidList);

namespace qvledger {

// Is the group in the list, ignoring case?  name need not be NUL-terminated.
bool isListed(const ALA_groupSIDList *list, const char *name, std::size_t nameLength, const char *domain);

} // namespace qvledger
