// Compares the domain of a credential with the domain of an access list entry.
//
// The flag *outp_matched (or *matched) is 0 if the domains match, and not 0 if they differ.  The calling
// function initialises the flag, which does not change if memory runs out during a comparison by suffix.  An
// operation returns 0 if it could compare the domains, whether they match or not.
#pragma once

#include <cstdint>

#include "ala/access/credential.h"
#include "platform/malloced.h"
#include "service/packed/values.h"
#include "service/status.h"

// Create and release the machine's domain, which replaces a missing domain of a credential or an entry.  Each
// registration calls ALA__EACL_Init when it begins and ALA__EACL_Term when it ends; the last ALA__EACL_Term
// releases the domain.
void ALA__EACL_Init();
void ALA__EACL_Term();

// Compares the entry's domain with the user's domain in the credential and, if they differ, with the host's
// domain.  An empty domain of type SEC_DOM_ANY matches every credential.  Returns 0, or 1 if the entry's
// domain cannot be decoded; the flag is then unchanged.
std::int32_t _ALA_EACL_DomainMatch(STF_l__hdr *inoutp_status, const ALA_credential_t *inp_cred,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched);

// Compares a domain of a credential with the domain of an entry.  The type of the credential's domain selects
// the comparison: by suffix or as a whole.  Returns 0, or non-zero if the entry's domain cannot be decoded;
// the flag is then unchanged.
std::int32_t _ALA_MatchDomainTypes(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                   SEC_domType_t in_credDomType, const GEN_distNameString *inp_aclDom,
                                   std::int32_t *outp_matched);

// Compares two dotted domains by suffix, ignoring case.  Domains of different types do not match, unless the
// entry's type is SEC_DOM_ANY.  An empty domain of the entry matches every domain; otherwise a null domain of
// the credential does not match.  Always returns 0.
std::int32_t _ALA_MatchDNSDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                      SEC_domType_t in_credDomType, const char *inp_aclDom,
                                      SEC_domType_t in_aclDomType, std::int32_t *outp_matched);

// Compares two whole domains, ignoring case.  Domains of different types do not match.  If both types are
// SEC_DOM_ANY, an empty domain of the entry matches every domain; otherwise a null domain never matches.
// Always returns 0.
std::int32_t _ALA_MatchExactDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                        SEC_domType_t in_credDomType, const char *inp_aclDom,
                                        SEC_domType_t in_aclDomType, std::int32_t *outp_matched);

// Compares two dotted names, ignoring case.  They match if the entry's domain equals the last labels of the
// credential's domain.  A trailing dot is ignored.  Returns 0, or 1 when memory runs out; the flag is then
// unchanged.
std::int32_t _ALA_DNSMatchAscii(STF_l__hdr *inoutp_status, const char *inp_credDom, const char *inp_aclDom,
                                std::int32_t *outp_matched);

// Returns a new text with the bytes in reverse order, which the calling function releases with free.  Null
// when memory runs out.
char *_ALA_ReverseString(const char *inp_str);

namespace qvledger {

// The decoded domain of an access list entry.
struct EntryDomain {
    explicit EntryDomain(const GEN_distNameString &value);

    Malloced<char> text; // null if decoding failed
    SEC_domType_t type = 0;
    bool hasType;
    std::int32_t failure; // 0 if decoding succeeded
};

// Like _ALA_EACL_DomainMatch, for a domain that is already decoded.
std::int32_t matchDomain(const ALA_credential_t &credential, const EntryDomain &entry, std::int32_t *matched);

} // namespace qvledger
