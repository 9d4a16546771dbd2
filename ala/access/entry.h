// Decides whether an access list entry admits the caller.
//
// Match operations return 0 for a match and non-zero otherwise.
#pragma once

#include <cstdint>

#include "ala/access/caller.h"
#include "service/packed/packed.h"
#include "service/status.h"

// Evaluates one entry: sets *outp_booleanResult to 1 if it grants access, else to 0.  0, or 1 for a null
// entry or an unknown privilege level.
std::int32_t ALA__AccountingAuthorized(STF_l__hdr *inoutp_status, const GEN_eACL *inp_accessControlList,
                                       const ALA_credential_t *inp_userInfo,
                                       std::int32_t *outp_booleanResult);

// Does the entry apply to the caller?  Any failure is returned as no match.
std::int32_t ALA__MSACLMatch(STF_l__hdr *inoutp_status, const GEN_eACL *inp_msACL,
                             const ALA_credential_t *inp_credential, ALA_groupSIDList **inoutpp_gSidList);

// Is the entry's group in the list of the caller's groups?
std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *inp_credential,
                          ALA_groupSIDList **inoutpp_gSidList);

// The bytes of a simple name, not NUL-terminated; they remain part of the name.  0, or 1 for an unknown
// choice.
std::int32_t ALA__SeparateSimpleName(const GEN_simpleName *inp_serverName, const char **outp_val,
                                     std::int32_t *outp_len);

namespace qvledger {

// Unpacks an entry, and evaluates it unless *granted is 1 already.  ALA_A_ODPUNPACK_ERROR if it cannot be
// unpacked, or its privilege level is unknown when it is evaluated.
ALA_retCode_t evaluateEntry(const std::uint8_t *packed, std::int32_t length, AS_attrValType_t type,
                            Caller &caller, std::int32_t *granted);

} // namespace qvledger
