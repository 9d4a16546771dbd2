#include "service/packed/packed.h"

#include "service/packed/value_memory.h"

using namespace qvledger;

std::int32_t AS_GetAttrIDR(STF_l__hdr *, const AS_attrRef *inp_reference, std::uint32_t *outp_identifier) {
    if (inp_reference->choice != 1)
        return ODP_E_REFUSED;
    *outp_identifier = inp_reference->identifier;
    return 0;
}

void GEN_DeleteExtACL(STF_l__hdr *, GEN_eACL *inp_entry, void *) {
    ValueMemory::release(inp_entry);
}

void GEN_GenToUint64(std::uint64_t *outp_number, const GEN_cardinal64 *inp_value) {
    *outp_number = static_cast<std::uint64_t>(inp_value->msdw) << 32 | inp_value->lsdw;
}
