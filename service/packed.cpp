#include "service/packed.h"

#include "service/unpack.h"

using namespace qvledger;

// What the records of most values take beside the bytes of their texts.
constexpr std::size_t kRoomForParts = 32;

static void deleteValue(STF_l__hdr *, void *value, void *) {
    ValueBlock::releaseFromFirst(value);
}

std::int32_t ODP_UnpackAV(STF_l__hdr *, std::int32_t in_length, const void *inp_bytes,
                          AS_attrValType_t in_type, void **outpp_value, AS_attrValDesc_t *outp_desc) {
    *outpp_value = nullptr;
    *outp_desc = {nullptr, deleteValue};
    if (in_length < 0 || inp_bytes == nullptr)
        return ODP_E_REFUSED;

    const UnpackRow &row = findUnpackRow(in_type);
    const auto length = static_cast<std::size_t>(in_length);
    ValueBlock block(row.size + length + kRoomForParts);
    XdrReader in({static_cast<const std::uint8_t *>(inp_bytes), length}, block);
    void *value = row.unpack(in);
    if (in.outOfMemory())
        return ODP_E_NO_MEMORY;
    if (in.failed() || !in.atEnd())
        return ODP_E_REFUSED;
    block.handOver();
    *outpp_value = value;
    return 0;
}

std::int32_t AS_GetAttrIDR(STF_l__hdr *, const AS_attrRef *inp_reference, std::uint32_t *outp_identifier) {
    if (inp_reference->choice != 1)
        return ODP_E_REFUSED;
    *outp_identifier = inp_reference->identifier;
    return 0;
}

void GEN_DeleteExtACL(STF_l__hdr *in_status, GEN_eACL *inp_entry, void *in_allocator) {
    deleteValue(in_status, inp_entry, in_allocator);
}

void GEN_GenToUint64(std::uint64_t *outp_number, const GEN_cardinal64 *inp_value) {
    *outp_number = static_cast<std::uint64_t>(inp_value->msdw) << 32 | inp_value->lsdw;
}
