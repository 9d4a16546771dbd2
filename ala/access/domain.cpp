#include "ala/access/domain.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "ala/access/host_domain.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "platform/byte_order.h"
#include "service/text/text.h"

using namespace qvledger;

// The machine's domain, of type SEC_DOM_NT.  It stays as it is while anyone is registered, so that those who
// are read it without the lock.
static GEN_distNameString *serverUserDomain = nullptr;
static std::int32_t registrations = 0; // that use it
static std::mutex registrationLock;

void ALA__EACL_Init() {
    const std::lock_guard guard(registrationLock);
    if (registrations++ > 0)
        return;
    const StatusList status;
    SEC_domType_t type = 0;
    const char *domain = ALA__GetUserDomain(&type);
    // Without memory there is no value, and comparisons that need it find no match.
    static_cast<void>(GENU_MakeDistNameString2(status, &serverUserDomain, domain, type, 0));
}

void ALA__EACL_Term() {
    const std::lock_guard guard(registrationLock);
    if (--registrations > 0)
        return;
    const StatusList status;
    GEN_DeleteDistNameString(status, serverUserDomain, nullptr);
    serverUserDomain = nullptr;
}

static bool isEmpty(const char *text) {
    return text == nullptr || *text == '\0';
}

static bool equalIgnoringCase(const char *one, const char *two) {
    return one != nullptr && two != nullptr &&
           _mbsicmp(reinterpret_cast<const unsigned char *>(one),
                    reinterpret_cast<const unsigned char *>(two)) == 0;
}

namespace {

struct TypedDomain {
    const char *text;
    SEC_domType_t type;
};

} // namespace

// A credential's domain; what it lacks, text or type, is the machine's.
static TypedDomain completed(const char *givenText, SEC_domType_t networkType,
                             const char *(*substitute)(SEC_domType_t *)) {
    TypedDomain domain = {givenText, fromNetworkOrder(networkType)};
    if (!isEmpty(domain.text) && domain.type != 0)
        return domain;
    SEC_domType_t type = 0;
    const char *text = substitute(&type);
    if (isEmpty(domain.text))
        domain.text = isEmpty(text) ? nullptr : text; // a machine without a domain has none to give
    if (domain.type == 0)
        domain.type = type;
    return domain;
}

std::int32_t _ALA_EACL_DomainMatch(STF_l__hdr *inoutp_status, const ALA_credential_t *inp_cred,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched) {
    Malloced<char> text;
    SEC_domType_t type = 0;
    if (GENU_ExtractDistNameString(inoutp_status, TextOut(text), &type, inp_aclDom, 0) != 0)
        return 1;
    if (isEmpty(text.get()) && type == SEC_DOM_ANY) {
        *outp_matched = 0;
        ALA_DETAIL("ALA_acl_match: matched #0 Universal match any:NULL\n");
        return 0;
    }

    GEN_distNameString entry = *inp_aclDom;
    if (isEmpty(text.get()) && serverUserDomain != nullptr)
        entry.name = serverUserDomain->name;
    if (type == 0 && serverUserDomain != nullptr)
        entry.name_syntax_o = serverUserDomain->name_syntax_o;
    const ALA_oncMsCred &caller = inp_cred->u.oncMsCred;
    const TypedDomain user = completed(caller.domainName, caller.userDomType, ALA__GetUserDomain);
    const std::int32_t result =
        _ALA_MatchDomainTypes(inoutp_status, user.text, user.type, &entry, outp_matched);
    if (result != 0 || *outp_matched == 0)
        return result;
    // The host pass takes the entry as it stands in the list.
    const TypedDomain host = completed(caller.hostDomain, caller.hostDomType, ALA__GetHostDomain);
    return _ALA_MatchDomainTypes(inoutp_status, host.text, host.type, inp_aclDom, outp_matched);
}

std::int32_t _ALA_MatchDomainTypes(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                   SEC_domType_t in_credDomType, const GEN_distNameString *inp_aclDom,
                                   std::int32_t *outp_matched) {
    if (inp_aclDom->name_syntax_o == nullptr && serverUserDomain != nullptr) {
        GEN_distNameString typed = *inp_aclDom;
        typed.name_syntax_o = serverUserDomain->name_syntax_o;
        return _ALA_MatchDomainTypes(inoutp_status, inp_credDom, in_credDomType, &typed, outp_matched);
    }
    Malloced<char> aclDom;
    SEC_domType_t aclType = 0;
    const std::int32_t result =
        GENU_ExtractDistNameString(inoutp_status, TextOut(aclDom), &aclType, inp_aclDom, 0);
    if (result != 0)
        return result;
    if (aclType != in_credDomType && aclType != SEC_DOM_ANY) {
        *outp_matched = 1;
        return 0;
    }
    const bool dotted = in_credDomType == SEC_DOM_DOTTED1 || in_credDomType == SEC_DOM_DOTTED2;
    const auto compare = dotted ? _ALA_MatchDNSDomainNames : _ALA_MatchExactDomainNames;
    return compare(inoutp_status, inp_credDom, in_credDomType, aclDom.get(), aclType, outp_matched);
}

std::int32_t _ALA_MatchExactDomainNames(STF_l__hdr *, const char *inp_credDom, SEC_domType_t in_credDomType,
                                        const char *inp_aclDom, SEC_domType_t in_aclDomType,
                                        std::int32_t *outp_matched) {
    *outp_matched = 1;
    if (in_credDomType != in_aclDomType)
        return 0; // this comparison has no wild card for the type
    if (isEmpty(inp_aclDom) && in_aclDomType == SEC_DOM_ANY) {
        *outp_matched = 0;
        ALA_DETAIL("_ALA_MatchExactDomainNames: matched #3 with NULL ACL domain\n");
    } else if (equalIgnoringCase(inp_credDom, inp_aclDom)) {
        *outp_matched = 0;
        ALA_DETAIL("_ALA_MatchExactDomainNames: matched #4 equality with ACL domain %s\n", inp_aclDom);
    }
    return 0;
}

std::int32_t _ALA_MatchDNSDomainNames(STF_l__hdr *inoutp_status, const char *inp_credDom,
                                      SEC_domType_t in_credDomType, const char *inp_aclDom,
                                      SEC_domType_t in_aclDomType, std::int32_t *outp_matched) {
    if (in_aclDomType != SEC_DOM_ANY && in_aclDomType != in_credDomType) {
        *outp_matched = 1;
    } else if (isEmpty(inp_aclDom)) {
        *outp_matched = 0;
        ALA_DETAIL("_ALA_MatchDNSDomainNames: matched #2 with NULL ACL DNS/NIS+ domain\n");
    } else if (inp_credDom == nullptr) {
        *outp_matched = 1;
    } else {
        // Without memory the flag stays as the caller set it.
        static_cast<void>(_ALA_DNSMatchAscii(inoutp_status, inp_credDom, inp_aclDom, outp_matched));
    }
    return 0;
}

std::int32_t _ALA_DNSMatchAscii(STF_l__hdr *, const char *inp_credDom, const char *inp_aclDom,
                                std::int32_t *outp_matched) {
    const Malloced<char> credReversed(_ALA_ReverseString(inp_credDom));
    const Malloced<char> aclReversed(_ALA_ReverseString(inp_aclDom));
    if (credReversed == nullptr || aclReversed == nullptr)
        return 1;
    // A leading dot of the reversed text is a trailing dot of the name.
    char *cred = credReversed.get() + (*credReversed == '.' ? 1 : 0);
    const char *acl = aclReversed.get() + (*aclReversed == '.' ? 1 : 0);
    const std::size_t length = std::strlen(acl);
    *outp_matched = 1;
    if (length > std::strlen(cred) || (cred[length] != '\0' && cred[length] != '.'))
        return 0;
    cred[length] = '\0';
    if (equalIgnoringCase(cred, acl)) {
        *outp_matched = 0;
        ALA_DETAIL("_ALA_DNSMatchAscii: matched #1 with ACL domain %s\n", inp_aclDom);
    }
    return 0;
}

char *_ALA_ReverseString(const char *inp_str) {
    const std::size_t length = std::strlen(inp_str);
    auto *reversed = static_cast<char *>(std::malloc(length + 1));
    if (reversed == nullptr)
        return nullptr;
    std::reverse_copy(inp_str, inp_str + length, reversed);
    reversed[length] = '\0';
    return reversed;
}
