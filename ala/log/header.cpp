#include "ala/log/header.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ala/access/entry.h"
#include "ala/base/record.h"
#include "ala/base/trace.h"
#include "ala/log/log_file.h"
#include "ala/log/open_log.h"
#include "platform/byte_order.h"

using namespace qvledger;

namespace {

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

static ALA_retCode_t readEntry(LogFile &in, AS_attrValType_t type, Caller &caller, std::int32_t *granted) {
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
    return evaluateEntry(packed, static_cast<std::int32_t>(length), type, caller, granted);
}

static ALA_retCode_t lookUp(LogFile &in, std::int32_t *accessOK, std::uint32_t *verNumber) {
    Header header = {};
    Caller caller;
    ALA_retCode_t result = readHeader(in, &header);
    *verNumber = header.verNum;
    if (result == ALA_N_NORMAL)
        result = caller.gather();
    // Read all entries even after an entry has granted access, because the first record follows the last
    // entry.
    std::int32_t granted = 0;
    for (std::uint32_t i = 0; result == ALA_N_NORMAL && i < header.tag.numAttrVal; ++i)
        result = readEntry(in, header.tag.attrValType, caller, &granted);
    if (result != ALA_N_NORMAL)
        return result;
    if (granted == 0 && LOG_Wants(LOG_DETAIL))
        caller.log();
    *accessOK = granted;
    return ALA_N_NORMAL;
}

ALA_retCode_t qvledger::lookUpPermission(LogFile &in, std::int32_t *accessOK, std::uint32_t *verNumber) {
    *accessOK = 0;
    const std::int64_t start = in.position();
    const ALA_retCode_t result = lookUp(in, accessOK, verNumber);
    if (result == ALA_N_NORMAL)
        return result;
    ALA_DETAIL("the header cannot be read after byte %lld: %s\n", static_cast<long long>(in.reach() - start),
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
