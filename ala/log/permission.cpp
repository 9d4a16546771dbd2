// The log's header, and what its access list says of the caller.
#include "ala/log/permission.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ala/access/acl.h"
#include "ala/access/host_domain.h"
#include "ala/base/owners.h"
#include "ala/base/record.h"
#include "ala/base/trace.h"
#include "ala/log/log_file.h"
#include "ala/log/open_log.h"
#include "ala/render/value_types.h"
#include "platform/byte_order.h"

using namespace qvledger;

namespace {

// A credential with the copies that it owns.
class Credential {
public:
    Credential() = default;
    ~Credential() {
        std::free(caller.user);
        std::free(caller.domainName);
        std::free(caller.host);
        std::free(caller.hostDomain);
    }
    Credential(const Credential &) = delete;
    Credential &operator=(const Credential &) = delete;

    // False when memory runs out.
    bool fill(const ALA__pac &pac) {
        caller.user = _strdup(pac.user);
        caller.domainName = _strdup(pac.userDomain);
        caller.userDomType = pac.userDomType;
        caller.host = _strdup(pac.host);
        caller.hostDomain = _strdup(pac.hostDomain);
        caller.hostDomType = pac.hostDomType;
        return caller.user != nullptr && caller.domainName != nullptr && caller.host != nullptr &&
               caller.hostDomain != nullptr;
    }
    const ALA_credential_t *get() const { return &credential; }

private:
    ALA_credential_t credential = {};
    ALA_oncMsCred &caller = credential.u.oncMsCred;
};

struct Header {
    std::uint32_t verNum;
    ALA_attrTag_t tag;
};

} // namespace

static ALA_retCode_t noBytes(const LogFile &in) {
    return in.outOfMemory() ? ALA_A_OUT_OF_MEMORY : ALA_A_FAIL_READ_LOG_FILE;
}

static ALA_retCode_t readHeader(LogFile &in, Header *header) {
    if (!in.needNetWord(&header->verNum))
        return noBytes(in);
    ALA_DETAIL("verNum: %d\n", static_cast<std::int32_t>(header->verNum));
    if (header->verNum >= kVersionWithDate) {
        std::uint32_t createDate = 0;
        if (!in.needNetWord(&createDate))
            return noBytes(in);
        ALA_DETAIL("createDate: %d\n", static_cast<std::int32_t>(createDate));
    }
    std::uint32_t numAttr = 0;
    if (!in.needNetWord(&numAttr))
        return noBytes(in);
    ALA_DETAIL("numAttr: %d\n", static_cast<std::int32_t>(numAttr));
    if (numAttr == 0)
        return ALA_A_BAD_NUMATTR_VALUE;
    const std::uint8_t *tag = in.need(sizeof header->tag);
    if (tag == nullptr)
        return noBytes(in);
    std::memcpy(&header->tag, tag, sizeof header->tag);
    ALA_DETAIL(
        "numAttrVal: %d, attrID: %d, attrValType: %d\n", static_cast<std::int32_t>(header->tag.numAttrVal),
        static_cast<std::int32_t>(header->tag.attrID), static_cast<std::int32_t>(header->tag.attrValType));
    ALA_DETAIL("numAttrVal: %d\n", static_cast<std::int32_t>(header->tag.numAttrVal));
    in.consume();
    return ALA_N_NORMAL;
}

bool qvledger::beginsAsLog(int fd) {
    LogFile in(fd);
    Header header = {};
    return readHeader(in, &header) == ALA_N_NORMAL && header.tag.attrValType == AS_ACCESS_LIST_ENTRY;
}

static ALA_retCode_t gatherCredential(Credential &credential) {
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (GetVersionExA(&version) == 0)
        return ALA_A_SYSTEM_ERR;
    ALA__pac pac = {};
    std::int32_t failed = 0;
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS)
        failed = ALA__GetUserInfoForClient95(&pac);
    else if (version.dwPlatformId == VER_PLATFORM_WIN32_NT)
        failed = ALA__GetUserInfoForClientNT(&pac);
    else
        return ALA_A_UNKNOWN_ERR;
    if (failed != 0)
        return ALA_A_SYSTEM_ERR;
    return credential.fill(pac) ? ALA_N_NORMAL : ALA_A_OUT_OF_MEMORY;
}

// Evaluates one packed entry, unless an earlier one has granted access; it has to be sound in either case.
static ALA_retCode_t evaluateEntry(const std::uint8_t *packed, std::int32_t length, AS_attrValType_t type,
                                   const Credential &credential, std::int32_t *accessOK) {
    const StatusList status;
    void *value = nullptr;
    AS_attrValDesc_t description = {};
    if (type != AS_ACCESS_LIST_ENTRY) // whatever it unpacks to, it is no entry
        return ALA_A_ODPUNPACK_ERROR;
    if (ODP_UnpackAV(status, length, packed, type, &value, &description) != 0)
        return ALA_A_ODPUNPACK_ERROR;
    auto *entry = static_cast<GEN_eACL *>(value);
    std::int32_t bad = 0;
    if (*accessOK == 0)
        bad = ALA__AccountingAuthorized(status, entry, credential.get(), accessOK);
    GEN_DeleteExtACL(status, entry, nullptr);
    return bad == 0 ? ALA_N_NORMAL : ALA_A_ODPUNPACK_ERROR;
}

static ALA_retCode_t readEntry(LogFile &in, AS_attrValType_t type, const Credential &credential,
                               std::int32_t *accessOK) {
    std::uint32_t length = 0;
    if (!in.needNativeWord(&length))
        return noBytes(in);
    ALA_DETAIL("attrVals->length: %d ntohl: %d\n", static_cast<std::int32_t>(length),
               static_cast<std::int32_t>(fromNetworkOrder(length)));
    if (!isValueLength(length))
        return ALA_A_FAIL_READ_LOG_FILE;
    const std::uint8_t *packed = in.need(length);
    if (packed == nullptr)
        return noBytes(in);
    in.consume();
    return evaluateEntry(packed, static_cast<std::int32_t>(length), type, credential, accessOK);
}

static void logRefusal(const ALA_credential_t &credential) {
    const auto textOf = [](const char *own, const char *(*ofMachine)(SEC_domType_t *)) {
        const char *text = own == nullptr || *own == '\0' ? ofMachine(nullptr) : own;
        return text != nullptr ? text : "";
    };
    const ALA_oncMsCred &caller = credential.u.oncMsCred;
    ALA_DETAIL("the caller was taken for the user \"%s\" of the domain \"%s\" on the host \"%s\" of \"%s\"\n",
               caller.user, textOf(caller.domainName, ALA__GetUserDomain), caller.host,
               textOf(caller.hostDomain, ALA__GetHostDomain));
}

static ALA_retCode_t lookUp(LogFile &in, std::int32_t *accessOK, std::uint32_t *verNumber) {
    Header header = {};
    const ALA_retCode_t headerResult = readHeader(in, &header);
    *verNumber = header.verNum;
    if (headerResult != ALA_N_NORMAL)
        return headerResult;
    Credential credential;
    if (const ALA_retCode_t result = gatherCredential(credential); result != ALA_N_NORMAL)
        return result;
    // The first record lies behind the last entry, so all are read even after one has granted access.
    std::int32_t granted = 0;
    for (std::uint32_t i = 0; i < header.tag.numAttrVal; ++i)
        if (const ALA_retCode_t result = readEntry(in, header.tag.attrValType, credential, &granted);
            result != ALA_N_NORMAL)
            return result;
    if (granted == 0 && LOG_Wants(LOG_DETAIL))
        logRefusal(*credential.get());
    *accessOK = granted;
    return ALA_N_NORMAL;
}

ALA_retCode_t qvledger::lookUpPermission(LogFile &in, std::int32_t *accessOK, std::uint32_t *verNumber) {
    *accessOK = 0;
    const std::int64_t start = in.position();
    const ALA_retCode_t result = lookUp(in, accessOK, verNumber);
    if (result == ALA_N_NORMAL)
        return result;
    ALA_DETAIL("the header does not read beyond byte %lld: %s\n", static_cast<long long>(in.reach() - start),
               in.error() != 0 ? std::strerror(in.error()) : codeName(result));
    errno = in.error();
    return ALA_FAIL(result, "Return code for ALA__LookupPermission is %s", codeName(result));
}

ALA_retCode_t ALA__LookupPermission(std::int32_t in_fd, std::int32_t *accessOK, std::uint32_t *verNumber) {
    LogFile in(in_fd, std::max<std::int64_t>(_lseeki64(in_fd, 0, SEEK_CUR), 0));
    const ALA_retCode_t result = lookUpPermission(in, accessOK, verNumber);
    if (result == ALA_N_NORMAL)
        static_cast<void>(_lseeki64(in_fd, in.position(), SEEK_SET));
    return result;
}
