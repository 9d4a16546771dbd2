// Admission by group: the groups of the calling process, and whether an entry's group is among them.
//
// Match operations give 0 for a match and non-zero for none.
#pragma once

#include <cstdint>

#include "ala/access/credential.h"
#include "service/packed/values.h"

// A group of the caller.
struct ALA_groupSIDList {
    char *user;       // the group's name
    char *domainName; // the group's domain
    ALA_groupSIDList *next;
};

// The groups of the calling process; a list that has nodes is left alone.  0, or 1 with an empty list.
std::int32_t _ALA_CreateGroupSIDList(const ALA_credential_t *inp_credential,
                                     ALA_groupSIDList **inoutpp_gSidList);
std::int32_t ALA__ClearGroupSIDList(ALA_groupSIDList **inoutpp_gSidList);

// Is the entry's group in the list?
std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *inp_credential,
                          ALA_groupSIDList **inoutpp_gSidList);
