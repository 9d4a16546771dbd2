// The caller: the user who runs the process and the host, each with its domain, and the user's groups.
#pragma once

#include "ala/access/credential.h"
#include "ala/access/groups.h"
#include "ala/ala.h"

// Fill a zeroed block with the user's identity, one operation for each family of Windows.  Return 0.  If a
// system call fails, memory runs out or a name does not fit its field, return 1; the contents of the block
// are then undefined.
std::int32_t ALA__GetUserInfoForClientNT(ALA__pac *outp_userCred);
std::int32_t ALA__GetUserInfoForClient95(ALA__pac *outp_userCred);

// Both return the machine's domain and set *outp_domType to SEC_DOM_NT.  The first call looks the domain up.
// The text is empty if the machine has no domain or the look-up fails; the facility owns the text.  If the
// look-up cannot be run, they return null and set *outp_domType to 0.  outp_domType may be null.
const char *ALA__GetHostDomain(SEC_domType_t *outp_domType);
const char *ALA__GetUserDomain(SEC_domType_t *outp_domType);

namespace qvledger {

// Looks up the machine's domain.  The first call of either operation above runs this function.
void TOnceGetDomainName();

inline bool isEmpty(const char *text) {
    return text == nullptr || *text == '\0';
}

struct Domain {
    const char *text; // null or empty: no domain
    SEC_domType_t type;
};

// Returns the domain of a credential, with its type in the machine's byte order.  A missing text or type is
// replaced by that of the machine's domain; the text is null if both are missing.  networkType: in network
// byte order; 0 if missing.
Domain completed(const char *text, SEC_domType_t networkType);

// The user's identity while one access list is evaluated.  The groups are looked up when an entry of the list
// needs them.
class Caller {
public:
    Caller() = default;
    ~Caller() { ALA__ClearGroupSIDList(&groups); }
    Caller(const Caller &) = delete;
    Caller &operator=(const Caller &) = delete;

    // Gets the user and the host from the system.  ALA_A_SYSTEM_ERR if this fails, ALA_A_UNKNOWN_ERR on an
    // unknown platform.
    ALA_retCode_t gather();
    void log() const;

    ALA_credential_t credential = {}; // texts point into pac_
    ALA_groupSIDList *groups = nullptr;

private:
    ALA__pac pac_ = {};
};

} // namespace qvledger
