#include "ala/render/pair.h"

#include <cstdlib>
#include <cstring>

#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/render/name_lookup.h"
#include "service/spare_block.h"
#include "service/status.h"

using namespace qvledger;

using PairMemory = SpareBlock<ALA__growingPair, sizeof(ALA__growingPair)>;

ALA_retCode_t ALA__AllocValue(attributeVal **outpp_val, Text &inoutp_text) {
    constexpr std::size_t kCopied = 4096; // bytes from which on a text is not copied
    static_assert(kCopied >= kValueSize, "such a text is in no maker's buffer");
    const bool isCopied = inoutp_text.size() < kCopied;
    const std::size_t room = isCopied ? inoutp_text.size() + 1 : 0;
    auto *value = static_cast<attributeVal *>(std::malloc(sizeof(attributeVal) + room));
    *outpp_val = value;
    if (value == nullptr)
        return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Return code for ALA__AllocValue is ALA_A_OUT_OF_MEMORY");
    *value = {isCopied ? static_cast<char *>(std::memcpy(value + 1, inoutp_text.c_str(), room))
                       : inoutp_text.releaseToFit(),
              nullptr};
    return ALA_N_NORMAL;
}

void ALA__FreeValue(const ALA_attrPair *inp_pair, attributeVal *inp_value) {
    if (inp_value->value != reinterpret_cast<const ALA__roomyValue *>(inp_value)->text)
        std::free(inp_value->value);
    if (inp_value != &reinterpret_cast<const ALA__growingPair *>(inp_pair)->first.node)
        std::free(inp_value);
}

void PairDeleter::operator()(ALA__growingPair *pair) const {
    while (pair->pair.attrVal != nullptr) {
        attributeVal *value = pair->pair.attrVal;
        pair->pair.attrVal = value->next;
        ALA__FreeValue(&pair->pair, value);
    }
    PairMemory::release(pair); // with its name
}

static ALA_retCode_t noMemory() {
    return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Return code for ALA__LookupAttrNameFromOID is ALA_A_OUT_OF_MEMORY");
}

ALA_retCode_t ALA__LookupAttrNameFromOID(const std::uint8_t *in_oid, std::string_view in_knownName,
                                         const char *inp_locale, void **inoutp_oidHandle,
                                         ALA_attrPair **outp_attribute, char **outpp_attrName) {
    *outp_attribute = nullptr;
    *outpp_attrName = nullptr;
    OwnedPair pair(static_cast<ALA__growingPair *>(PairMemory::allocate()));
    if (pair == nullptr)
        return noMemory();
    pair->first.text[0] = '\0';
    pair->first.node = {pair->first.text, nullptr};
    pair->pair = {nullptr, &pair->first.node};
    pair->last = &pair->first.node;

    const StatusList status;
    std::int32_t result = 0;
    if (inp_locale != nullptr) {
        const Malloced<char> copy(_strdup(inp_locale));
        if (copy == nullptr)
            return noMemory();
        char *locale = copy.get();
        result = OID_SetLocale(status, inoutp_oidHandle, &locale);
    }
    if (in_knownName.data() != nullptr)
        copyName(in_knownName.data(), in_knownName.size(), pair->name);
    else if (result == 0)
        result = OID_LookupBinary(status, *inoutp_oidHandle, in_oid, pair->name, 0);
    if (result != 0)
        return ALA_FAIL(ALA_A_OID_ERROR, "Return code for ALA__LookupAttrNameFromOID is ALA_A_OID_ERROR. "
                                         "OID_LookupBinary failed.");
    *outpp_attrName = pair->name;
    *outp_attribute = &pair.release()->pair;
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_FreeAttributePair(ALA_attrPair **inoutp_attribute) {
    const FuncTrace trace("ALA_FreeAttributePair");
    PairDeleter()(reinterpret_cast<ALA__growingPair *>(*inoutp_attribute));
    *inoutp_attribute = nullptr;
    return ALA_N_NORMAL;
}
