// The caller: the user and the host, each with its domain, and the user's groups.
#pragma once

#include "ala/access/credential.h"
#include "ala/access/groups.h"
#include "ala/ala.h"

// Fill a zeroed block with the caller's identity, each on its platform family.  0, or 1 if a system call
// fails, memory runs out or a name does not fit its field; the contents of the block are then undefined.
std::int32_t ALA__GetUserInfoForClientNT(ALA__pac *outp_userCred);
std::int32_t ALA__GetUserInfoForClient95(ALA__pac *outp_userCred);

// The machine's domain, looked up once per process, and its type, SEC_DOM_NT.  The text is empty if there is
// no domain; the facility owns it.  Null and type 0 if the look-up cannot be run.
const char *ALA__GetHostDomain(SEC_domType_t *outp_domType);
const char *ALA__GetUserDomain(SEC_domType_t *outp_domType);

namespace qvledger {

// Looks the machine's domain up.  Both operations above run it, once per process.
void TOnceGetDomainName();

inline bool isEmpty(const char *text) {
    return text == nullptr || *text == '\0';
}

struct Domain {
    const char *text; // null: none
    SEC_domType_t type;
};

// The domain of a credential, with the machine's text or type where its own is missing.
Domain completed(const char *text, SEC_domType_t networkType);

// The caller's identity while one access list is evaluated.  The groups are looked up when an entry needs
// them.
class Caller {
public:
    Caller() = default;
    ~Caller() { ALA__ClearGroupSIDList(&groups); }
    Caller(const Caller &) = delete;
    Caller &operator=(const Caller &) = delete;

    // Gets user and host from the system.  ALA_A_SYSTEM_ERR if that fails, ALA_A_UNKNOWN_ERR on an unknown
    // platform.
    ALA_retCode_t gather();
    void log() const;

    ALA_credential_t credential = {}; // its texts point into pac_
    ALA_groupSIDList *groups = nullptr;

private:
    ALA__pac pac_ = {};
};

} // namespace qvledger
