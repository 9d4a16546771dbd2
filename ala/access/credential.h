// The structures that contain the user's identity.
#pragma once

#include <cstdint>

#include "service/packed/values.h"

// The type of a domain, which selects how its name is compared.
using SEC_domType_t = std::uint32_t;
constexpr SEC_domType_t SEC_DOM_FLAT = 3044;    // compared as a whole
constexpr SEC_domType_t SEC_DOM_DOTTED1 = 3045; // dotted, compared by suffix
constexpr SEC_domType_t SEC_DOM_DOTTED2 = 3048; // dotted, compared by suffix
constexpr SEC_domType_t SEC_DOM_W95HOST = 3049; // a computer name used as a domain
constexpr SEC_domType_t SEC_DOM_NT = 3051;      // the type of the machine's domain
constexpr SEC_domType_t SEC_DOM_ANY = 3055;     // in an entry: any type

namespace qvledger {

// Maximum sizes in bytes, NUL included.
constexpr std::size_t kUserSize = 256; // user or host name
constexpr std::size_t kDomainSize = 1024;
constexpr std::uint32_t kComputerNameSize = 16;

} // namespace qvledger

// The user's identity as obtained from the system.  All numbers are in network byte order.
struct ALA__pac {
    std::uint32_t version; // always 1001
    std::uint32_t magic;
    char user[qvledger::kUserSize];
    char userDomain[qvledger::kDomainSize];
    std::uint32_t userDomType;
    char host[qvledger::kUserSize];
    char hostDomain[qvledger::kDomainSize];
    std::uint32_t hostDomType;
    std::uint32_t certificateLen_o;
    std::uint8_t certificateVal_o[1];
};

// The user's identity as compared with an access list.  The domain types are in network byte order.
struct ALA_oncMsCred {
    char *user;
    char *domainName;
    SEC_domType_t userDomType;
    char *host;
    char *hostDomain;
    SEC_domType_t hostDomType;
    void *handle;
};

struct ALA_dceCred {
    GEN_string pac;
};

struct ALA_signature {
    GEN_simpleName serverName;
    GEN_string pac;
};

struct ALA_credential_t {
    std::int32_t choice;
    std::int32_t credType;
    union {
        ALA_oncMsCred oncMsCred; // the only member in use
        ALA_dceCred dceCred;
        ALA_signature sig;
    } u;
};
