// Does the domain of a credential fall within the domain of an access list entry?
//
// A matched flag is set by the caller before a comparison: 0 means that the domains match, any other value
// that they do not.  The result of an operation is separate: 0 means that the comparison ran.
#pragma once

#include <cstdint>

#include "ala/access/credential.h"
#include "platform/malloced.h"
#include "service/packed/values.h"
#include "service/status.h"

// Make and release the machine's domain as a value, which stands in where a credential or an entry gives
// none.  Paired per registration; the last ALA__EACL_Term releases it.
void ALA__EACL_Init();
void ALA__EACL_Term();

// Compares the credential's user domain, then its host domain.  1 when the entry's domain cannot be read.
std::int32_t _ALA_EACL_DomainMatch(STF_l__hdr *inoutp_status, const ALA_credential_t *inp_cred,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched);

// Chooses the comparison by the two types.  Non-zero when the entry's domain cannot be read.
std::int32_t _ALA_MatchDomainTypes(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                   SEC_domType_t in_credDomType, const GEN_distNameString *inp_aclDom,
                                   std::int32_t *outp_matched);

// Dotted names, by suffix; and names compared whole.  A null credential domain matches nothing.  Always 0.
std::int32_t _ALA_MatchDNSDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                      SEC_domType_t in_credDomType, const char *inp_aclDom,
                                      SEC_domType_t in_aclDomType, std::int32_t *outp_matched);
std::int32_t _ALA_MatchExactDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                        SEC_domType_t in_credDomType, const char *inp_aclDom,
                                        SEC_domType_t in_aclDomType, std::int32_t *outp_matched);

// Is the entry's domain a suffix of the credential's on a label boundary?  1 when memory runs out, with the
// flag untouched.
std::int32_t _ALA_DNSMatchAscii(STF_l__hdr *inoutp_status, const char *inp_credDom, const char *inp_aclDom,
                                std::int32_t *outp_matched);

// The bytes from the end to the start as a new text, or null.
char *_ALA_ReverseString(const char *inp_str);

namespace qvledger {

// The domain of an entry, decoded.
struct EntryDomain {
    explicit EntryDomain(const GEN_distNameString &value);

    Malloced<char> text; // null if it cannot be read
    SEC_domType_t type = 0;
    bool hasType;
    std::int32_t failure; // of reading it
};

// _ALA_EACL_DomainMatch for a decoded domain.
std::int32_t matchDomain(const ALA_credential_t &credential, const EntryDomain &entry, std::int32_t *matched);

} // namespace qvledger
