// Decides whether an access list entry admits the user.
#pragma once

#include <cstdint>

#include "ala/access/caller.h"
#include "service/packed/packed.h"
#include "service/status.h"

// Evaluates one entry: sets *outp_booleanResult to 1 if the entry grants access to the user, otherwise to 0.
// Returns 0, or 1 if the entry is null or its privilege level is unknown.
std::int32_t ALA__AccountingAuthorized(STF_l__hdr *inoutp_status, const GEN_eACL *inp_accessControlList,
                                       const ALA_credential_t *inp_userInfo,
                                       std::int32_t *outp_booleanResult);

// Checks whether the entry applies to the user.  If the entry names a group, creates the list of the user's
// groups unless it exists.  Returns 0 if the entry applies; otherwise, and after a failure, returns non-zero.
std::int32_t ALA__MSACLMatch(STF_l__hdr *inoutp_status, const GEN_eACL *inp_msACL,
                             const ALA_credential_t *inp_credential, ALA_groupSIDList **inoutpp_gSidList);

// Checks whether the list of the user's groups contains the entry's group.  Returns 0 if the list contains
// the group, otherwise 1.
std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *inp_credential,
                          ALA_groupSIDList **inoutpp_gSidList);

// Points *outp_val to the bytes of a simple name, which are part of the name and not NUL-terminated.  Returns
// 0, or 1 if the name's choice is unknown.
std::int32_t ALA__SeparateSimpleName(const GEN_simpleName *inp_serverName, const char **outp_val,
                                     std::int32_t *outp_len);

namespace qvledger {

// Unpacks an access list entry.  Unless *granted is 1 already, evaluates the entry and sets *granted to 1 if
// the entry admits the user, otherwise to 0.  Returns ALA_N_NORMAL, or ALA_A_ODPUNPACK_ERROR if the entry
// cannot be unpacked or an evaluated entry has an unknown privilege level.
ALA_retCode_t evaluateEntry(const std::uint8_t *packed, std::int32_t length, AS_attrValType_t type,
                            Caller &caller, std::int32_t *granted);

} // namespace qvledger
