#include "ala/access/domain.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "ala/access/caller.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "service/text/text.h"

using namespace qvledger;

// The machine's domain, of type SEC_DOM_NT.  Does not change while there is a registration, so no lock is
// needed to read it.
static GEN_distNameString *serverUserDomain = nullptr;
static std::int32_t registrations = 0;
static std::mutex registrationLock;

void ALA__EACL_Init() {
    const std::lock_guard guard(registrationLock);
    if (registrations++ > 0)
        return;
    SEC_domType_t type = 0;
    const char *domain = ALA__GetUserDomain(&type);
    // When memory runs out, serverUserDomain stays null, and comparisons that need the machine's domain do
    // not match.
    static_cast<void>(GENU_MakeDistNameString2(StatusList(), &serverUserDomain, domain, type, 0));
}

void ALA__EACL_Term() {
    const std::lock_guard guard(registrationLock);
    if (--registrations > 0)
        return;
    GEN_DeleteDistNameString(StatusList(), serverUserDomain, nullptr);
    serverUserDomain = nullptr;
}

static bool equalIgnoringCase(const char *one, const char *two) {
    return one != nullptr && two != nullptr &&
           _mbsicmp(reinterpret_cast<const unsigned char *>(one),
                    reinterpret_cast<const unsigned char *>(two)) == 0;
}

EntryDomain::EntryDomain(const GEN_distNameString &value)
    : hasType(value.name_syntax_o != nullptr),
      failure(GENU_ExtractDistNameString(StatusList(), TextOut(text), &type, &value, 0)) {}

// The machine's domain as text and type; the text is empty if the machine has no domain.  Null and 0 without
// a registration, or if memory ran out when the domain was stored.
static Domain machineDomain() {
    if (serverUserDomain == nullptr)
        return {nullptr, 0};
    return {serverUserDomain->name.u.iso_646_irv, serverUserDomain->name_syntax_o->u.globalForm};
}

// The entry's domain.  A missing type is replaced by that of the machine's domain.
static Domain typed(const EntryDomain &entry) {
    return {entry.text.get(), entry.hasType ? entry.type : machineDomain().type};
}

static void compare(const Domain &credential, const Domain &entry, std::int32_t *matched) {
    const bool dotted = credential.type == SEC_DOM_DOTTED1 || credential.type == SEC_DOM_DOTTED2;
    const auto operation = dotted ? _ALA_MatchDNSDomainNames : _ALA_MatchExactDomainNames;
    if (entry.type != credential.type && entry.type != SEC_DOM_ANY)
        *matched = 1;
    else
        static_cast<void>(
            operation(StatusList(), credential.text, credential.type, entry.text, entry.type, matched));
}

std::int32_t qvledger::matchDomain(const ALA_credential_t &credential, const EntryDomain &entry,
                                   std::int32_t *matched) {
    if (entry.failure != 0)
        return 1;
    const char *text = entry.text.get();
    if (isEmpty(text) && entry.type == SEC_DOM_ANY) {
        *matched = 0;
        ALA_DETAIL("ALA_acl_match: matched #0 Universal match any:NULL\n");
        return 0;
    }
    const Domain machine = machineDomain();
    const Domain filled = {isEmpty(text) && machine.text != nullptr ? machine.text : text,
                           entry.type != 0 ? entry.type : machine.type};
    const ALA_oncMsCred &caller = credential.u.oncMsCred;
    compare(completed(caller.domainName, caller.userDomType), filled, matched);
    if (*matched != 0) // here, an empty domain of the entry is not replaced
        compare(completed(caller.hostDomain, caller.hostDomType), typed(entry), matched);
    return 0;
}

std::int32_t _ALA_EACL_DomainMatch(STF_l__hdr *, const ALA_credential_t *inp_cred,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched) {
    return matchDomain(*inp_cred, EntryDomain(*inp_aclDom), outp_matched);
}

std::int32_t _ALA_MatchDomainTypes(STF_l__hdr *, const char *inp_credDom, SEC_domType_t in_credDomType,
                                   const GEN_distNameString *inp_aclDom, std::int32_t *outp_matched) {
    const EntryDomain entry(*inp_aclDom);
    if (entry.failure == 0)
        compare({inp_credDom, in_credDomType}, typed(entry), outp_matched);
    return entry.failure;
}

std::int32_t _ALA_MatchExactDomainNames(STF_l__hdr *, const char *inp_credDom, SEC_domType_t in_credDomType,
                                        const char *inp_aclDom, SEC_domType_t in_aclDomType,
                                        std::int32_t *outp_matched) {
    *outp_matched = 1;
    if (in_credDomType != in_aclDomType)
        return 0; // here, SEC_DOM_ANY does not match other types
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
        // When memory runs out, *outp_matched is unchanged.
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
    // A trailing dot of the name is the first byte of the reversed text; skip it.
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
