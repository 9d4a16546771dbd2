// One entry of an access list: does it admit the caller?
//
// Match operations give 0 for a match and non-zero for none.
#pragma once

#include <cstdint>

#include "ala/access/caller.h"
#include "service/packed/packed.h"
#include "service/status.h"

// Evaluates one entry: outp_booleanResult is 1 if it grants access, else 0.  0, or 1 for a null entry or one
// with a privilege level that does not exist.
std::int32_t ALA__AccountingAuthorized(STF_l__hdr *inoutp_status, const GEN_eACL *inp_accessControlList,
                                       const ALA_credential_t *inp_userInfo,
                                       std::int32_t *outp_booleanResult);

// Does the entry apply to the caller?  Any failure means that it does not.
std::int32_t ALA__MSACLMatch(STF_l__hdr *inoutp_status, const GEN_eACL *inp_msACL,
                             const ALA_credential_t *inp_credential, ALA_groupSIDList **inoutpp_gSidList);

// Is the entry's group in the list?
std::int32_t _ALA_MSingrp(const GEN_eACL *inp_msACL, const ALA_credential_t *inp_credential,
                          ALA_groupSIDList **inoutpp_gSidList);

// The bytes of a simple name where they lie, without a terminator.  0, or 1 for an unknown choice.
std::int32_t ALA__SeparateSimpleName(const GEN_simpleName *inp_serverName, const char **outp_val,
                                     std::int32_t *outp_len);

namespace qvledger {

// Evaluates one packed entry, unless an earlier one has granted access; it must be sound in either case.
ALA_retCode_t evaluateEntry(const std::uint8_t *packed, std::int32_t length, AS_attrValType_t type,
                            Caller &caller, std::int32_t *granted);

} // namespace qvledger
