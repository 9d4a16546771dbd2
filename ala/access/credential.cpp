#include "ala/access/credential.h"

#include <cstring>

#include "ala/base/owners.h"
#include "platform/byte_order.h"

using namespace qvledger;

constexpr std::uint32_t kPacVersion = 1001;
constexpr DWORD kUserNameSize = 512;
constexpr DWORD kFirstSidSize = 512;
namespace {

// Memory for the SID, from the process heap as its users expect.
class HeapBlock {
public:
    explicit HeapBlock(std::size_t size) : block(HeapAlloc(GetProcessHeap(), 0, size)) {
        if (block != nullptr)
            std::memset(block, 0, size);
    }
    ~HeapBlock() {
        if (block != nullptr)
            HeapFree(GetProcessHeap(), 0, block);
    }
    HeapBlock(const HeapBlock &) = delete;
    HeapBlock &operator=(const HeapBlock &) = delete;

    bool grow(std::size_t size) {
        void *grown = HeapReAlloc(GetProcessHeap(), 0, block, size);
        if (grown == nullptr)
            return false;
        block = grown;
        return true;
    }
    void *get() const { return block; }

private:
    void *block;
};

struct Names {
    const char *user;
    const char *userDomain;
    const char *host;
    const char *hostDomain;
};

} // namespace

template <std::size_t Size>
static bool fill(char (&outp_field)[Size], const char *inp_name) {
    const std::size_t length = strnlen(inp_name, Size);
    if (length == Size)
        return false;
    std::memcpy(outp_field, inp_name, length + 1);
    return true;
}

static std::int32_t fillPac(ALA__pac *pac, const Names &names, SEC_domType_t domainType) {
    pac->version = toNetworkOrder(kPacVersion);
    pac->magic = toNetworkOrder(0);
    pac->userDomType = toNetworkOrder(domainType);
    pac->hostDomType = toNetworkOrder(domainType);
    pac->certificateLen_o = toNetworkOrder(0);
    pac->certificateVal_o[0] = 0;
    const bool fits = fill(pac->user, names.user) && fill(pac->userDomain, names.userDomain) &&
                      fill(pac->host, names.host) && fill(pac->hostDomain, names.hostDomain);
    return fits ? 0 : 1;
}

// The domain of the user's account.  The first look-up only asks for the sizes.
static Malloced<char> accountDomain(const char *user) {
    HeapBlock sid(kFirstSidSize);
    if (sid.get() == nullptr)
        return nullptr;
    DWORD sidSize = kFirstSidSize;
    char noDomain[1] = "";
    DWORD domainSize = 0;
    SID_NAME_USE use = SidTypeUser;
    if (LookupAccountNameA(nullptr, user, sid.get(), &sidSize, noDomain, &domainSize, &use) != 0 ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return nullptr;

    Malloced<char> domain(static_cast<char *>(std::calloc(std::size_t{domainSize} + 1, 1)));
    if (domain == nullptr || (sidSize > kFirstSidSize && !sid.grow(sidSize)))
        return nullptr;
    if (LookupAccountNameA(nullptr, user, sid.get(), &sidSize, domain.get(), &domainSize, &use) == 0)
        return nullptr;
    return domain;
}

std::int32_t ALA__GetUserInfoForClientNT(ALA__pac *outp_userCred) {
    char user[kUserNameSize] = "";
    DWORD userSize = sizeof user;
    if (GetUserNameA(user, &userSize) == 0)
        return 1;
    const Malloced<char> domain = accountDomain(user);
    char host[kComputerNameSize] = "";
    DWORD hostSize = sizeof host;
    if (domain == nullptr || GetComputerNameA(host, &hostSize) == 0)
        return 1;
    // The machine counts as a member of its user's domain.
    return fillPac(outp_userCred, {user, domain.get(), host, domain.get()}, SEC_DOM_NT);
}

std::int32_t ALA__GetUserInfoForClient95(ALA__pac *outp_userCred) {
    char user[kUserNameSize] = "";
    DWORD userSize = sizeof user;
    char host[kComputerNameSize] = "";
    DWORD hostSize = sizeof host;
    if (GetUserNameA(user, &userSize) == 0 || GetComputerNameA(host, &hostSize) == 0)
        return 1;
    return fillPac(outp_userCred, {user, host, host, host}, SEC_DOM_W95HOST);
}
