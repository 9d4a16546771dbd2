// Who is calling: the user and the host, each with its domain, and the user's groups.
#pragma once

#include "ala/access/credential.h"
#include "ala/access/groups.h"
#include "ala/ala.h"

// Fill a zeroed block from the operating system, on either platform family.  0, or 1 when a call fails,
// memory runs out or a name does not fit its field; the block must not be used then.
std::int32_t ALA__GetUserInfoForClientNT(ALA__pac *outp_userCred);
std::int32_t ALA__GetUserInfoForClient95(ALA__pac *outp_userCred);

// The machine's domain, looked up once per process, and its type, SEC_DOM_NT.  The text belongs to the
// facility.  Null, with the type 0, when the look-up could not be run.
const char *ALA__GetHostDomain(SEC_domType_t *outp_domType);
const char *ALA__GetUserDomain(SEC_domType_t *outp_domType);

namespace qvledger {

// Looks the domain up.  Both operations call it, once per process.
void TOnceGetDomainName();

inline bool isEmpty(const char *text) {
    return text == nullptr || *text == '\0';
}

struct Domain {
    const char *text; // null: none
    SEC_domType_t type;
};

// A domain of a credential.  A missing text or type is the machine's.
Domain completed(const char *text, SEC_domType_t networkType);

// The identity for one access list.  The groups stay empty until an entry needs them.
class Caller {
public:
    Caller() = default;
    ~Caller() { ALA__ClearGroupSIDList(&groups); }
    Caller(const Caller &) = delete;
    Caller &operator=(const Caller &) = delete;

    // ALA_N_NORMAL, ALA_A_SYSTEM_ERR or, on an unknown platform, ALA_A_UNKNOWN_ERR.
    ALA_retCode_t gather();
    void log() const;

    ALA_credential_t credential = {}; // its texts are the block's
    ALA_groupSIDList *groups = nullptr;

private:
    ALA__pac pac_ = {};
};

} // namespace qvledger
