// Compares the domain of a credential with the domain of an access list entry.
//
// A matched flag of 0 means that the domains match, any other value that they do not.  The caller initialises
// it.  The result of an operation is separate: 0 means that the comparison ran.
#pragma once

#include <cstdint>

#include "ala/access/credential.h"
#include "platform/malloced.h"
#include "service/packed/values.h"
#include "service/status.h"

// Create and release the machine's domain, which replaces a domain that a credential or an entry lacks.
// Each registration calls both; the last ALA__EACL_Term releases the domain.
void ALA__EACL_Init();
void ALA__EACL_Term();

// Compares the credential's user domain, then its host domain.  1 if the entry's domain cannot be decoded.
std::int32_t _ALA_EACL_DomainMatch(STF_l__hdr *inoutp_status, const ALA_credential_t *inp_cred,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched);

// Selects the comparison by the two types.  Non-zero if the entry's domain cannot be decoded.
std::int32_t _ALA_MatchDomainTypes(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                   SEC_domType_t in_credDomType, const GEN_distNameString *inp_aclDom,
                                   std::int32_t *outp_matched);

// Compare dotted names by suffix, and names as a whole, ignoring case.  An empty entry domain matches every
// domain; for whole names only if its type is SEC_DOM_ANY.  Otherwise a null credential domain does not
// match.  Always 0.
std::int32_t _ALA_MatchDNSDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                      SEC_domType_t in_credDomType, const char *inp_aclDom,
                                      SEC_domType_t in_aclDomType, std::int32_t *outp_matched);
std::int32_t _ALA_MatchExactDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                        SEC_domType_t in_credDomType, const char *inp_aclDom,
                                        SEC_domType_t in_aclDomType, std::int32_t *outp_matched);

// Matches if the entry's domain is a suffix of the credential's at a label boundary.  1 when memory runs out;
// the flag is then unchanged.
std::int32_t _ALA_DNSMatchAscii(STF_l__hdr *inoutp_status, const char *inp_credDom, const char *inp_aclDom,
                                std::int32_t *outp_matched);

// A new text with the bytes in reverse order, released with free; null when memory runs out.
char *_ALA_ReverseString(const char *inp_str);

namespace qvledger {

// The decoded domain of an entry.
struct EntryDomain {
    explicit EntryDomain(const GEN_distNameString &value);

    Malloced<char> text; // null if it cannot be decoded
    SEC_domType_t type = 0;
    bool hasType;
    std::int32_t failure; // 0 if it could be decoded
};

// _ALA_EACL_DomainMatch with a decoded domain.
std::int32_t matchDomain(const ALA_credential_t &credential, const EntryDomain &entry, std::int32_t *matched);

} // namespace qvledger
