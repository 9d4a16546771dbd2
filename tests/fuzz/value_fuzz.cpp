// Renders a packed value: the first byte is its type, the other bytes are the value.
#include <cstdlib>
#include <string>

#include "ala/render/pair.h"
#include "service/oid/oid.h"
#include "tests/fuzz/sandbox.h"

using namespace qvledger;

static std::string textsOf(const ALA_attrPair *pair) {
    std::string texts;
    for (const attributeVal *value = pair != nullptr ? pair->attrVal : nullptr; value != nullptr;
         value = value->next)
        texts.append(value->value).append("|");
    return texts;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    static void *database = nullptr;
    const StatusList status;
    if (database == nullptr) {
        OID_Init(status, nullptr, 0);
        if (OID_OpenDb(status, sandbox.root().oids().c_str(), 0, 0, &database) != 0)
            std::abort();
    }
    if (size == 0)
        return 0;
    attrValNode node = {};
    node.attrValType = bytes[0];
    if (OID_ConvertDecToBin(status, "1.3.6.1.4.1.32473.1.1", node.oidBytes, 0) != 0)
        std::abort();
    node.oid = node.oidBytes;
    // Renders the unpacked value and the packed bytes, each twice, so that a second text is appended.
    ALA_attrPair *pair = nullptr, *ofPacked = nullptr;
    for (int i = 0; i < 2; ++i) {
        void *value = nullptr;
        AS_attrValDesc_t description = {};
        ALA_retCode_t result = ALA_A_ODPUNPACK_ERROR;
        if (ODP_UnpackAV(status, static_cast<std::int32_t>(size - 1), bytes + 1, node.attrValType, &value,
                         &description) == 0)
            result = ALA__GetAttribute(&node, value, description, nullptr, &database, &pair);
        if (size > 1 && getPackedAttribute(node, {bytes + 1, size - 1}, "name", {.oidHandle = &database},
                                           &ofPacked) != result)
            std::abort();
    }
    if (size > 1 && textsOf(pair) != textsOf(ofPacked))
        std::abort();
    for (ALA_attrPair **each : {&pair, &ofPacked})
        if (*each != nullptr)
            ALA_FreeAttributePair(each);
    return 0;
}
