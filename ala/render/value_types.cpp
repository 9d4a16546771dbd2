// Maps each value type number to its functions.
#include "ala/render/value_types.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "ala/render/formatters.h"
#include "ala/render/identifiers.h"
#include "ala/render/name_lookup.h"
#include "ala/render/profiles.h"
#include "ala/render/scalars.h"
#include "ala/render/text_types.h"
#include "service/packed/unpack.h"

using namespace qvledger;

constexpr RenderFailure qvledger::kRefused = {ALA_A_ODPUNPACK_ERROR, ""};

// ---- How values are read and rendered ----

// Renders a record through a formatter.
template <auto *kFormatter, class Record>
static const RenderFailure *formatted(Rendering &rendering, const Record &record) {
    kFormatter(rendering.status, *rendering.context.oidHandle, rendering.text, &record);
    return nullptr;
}

static const RenderFailure *renderNothing(Rendering &, const GEN_eACL &) {
    return nullptr;
}

// The functions for a type whose value is a single record.
template <class Record, const RenderFailure *(*kRender)(Rendering &, const Record &)>
static constexpr ValueForm value = {[](XdrReader &in) -> void * {
                                        auto *record = in.make<Record>();
                                        if (record != nullptr)
                                            unpack(in, *record);
                                        return record;
                                    },
                                    [](Rendering &rendering, const void *record) {
                                        return kRender(rendering, *static_cast<const Record *>(record));
                                    },
                                    [](XdrReader &in, Rendering &rendering) {
                                        Record record = {};
                                        unpack(in, record);
                                        return in.isWhole() ? kRender(rendering, record) : &kRefused;
                                    }};

// The functions for a type whose value is a chain of nodes.  The first node represents the chain; kElement is
// the node's member that contains the element.
template <class Node, auto kElement, const RenderFailure *(*kRender)(Rendering &, const Node &)>
static constexpr ValueForm chain = {[](XdrReader &in) -> void * { return unpackChain<Node>(in, kElement); },
                                    [](Rendering &rendering, const void *head) {
                                        return kRender(rendering, *static_cast<const Node *>(head));
                                    },
                                    [](XdrReader &in, Rendering &rendering) -> const RenderFailure * {
                                        const Node *head = unpackChain<Node>(in, kElement);
                                        if (!in.isWhole())
                                            return &kRefused;
                                        return head != nullptr ? kRender(rendering, *head) : nullptr;
                                    }};

static std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// The functions for texts that are rendered unchanged.
static constexpr ValueForm characters = {
    [](XdrReader &in) -> void * { return in.characters(); },
    [](Rendering &rendering, const void *record) -> const RenderFailure * {
        rendering.text.add(static_cast<const char *>(record));
        return nullptr;
    },
    [](XdrReader &in, Rendering &rendering) -> const RenderFailure * {
        rendering.view = asText(in.text(std::numeric_limits<std::int32_t>::max()));
        return in.isWhole() ? nullptr : &kRefused;
    }};

static constexpr ValueForm octets = {
    value<GEN_string, renderOctets>.unpack, value<GEN_string, renderOctets>.render,
    [](XdrReader &in, Rendering &rendering) -> const RenderFailure * {
        const std::string_view bytes = asText(in.bytes(std::numeric_limits<std::int32_t>::max()));
        rendering.view = bytes.substr(0, bytes.find('\0'));
        return in.isWhole() ? nullptr : &kRefused;
    }};

// ---- The table ----

static constexpr ValueType kRows[] = {
    {0, value<GEN_boolean_t, renderBoolean>, ALA_KIND_BOOLEAN},
    {1, value<std::int32_t, renderInt>, ALA_KIND_INTEGER},
    {4, value<GEN_deltaTime_t, formatted<ALA__DeltaTimeToAscii>>, ALA_KIND_DURATION},
    {6, value<GEN_distNameString, renderDistName>},
    {AS_ACCESS_LIST_ENTRY, value<GEN_eACL, renderNothing>},
    {8, value<GEN_eventHandlingProfile, renderEventHandlingProfile>},
    {9, value<GEN_fontReference, formatted<ALA__FontReferenceToAscii>>},
    {10, value<GEN_oid_t, renderOid>},
    {11, value<GEN_ignoredAttribute, renderIgnoredAttribute>},
    {12, value<std::int32_t, renderInt>, ALA_KIND_INTEGER},
    {14, characters},
    {16, value<GEN_text, renderText>},
    {18, value<GEN_nameOrOid, formatted<ALA__NameOrOidToAscii>>},
    {20, octets},
    {22, value<std::int32_t, renderInt>, ALA_KIND_INTEGER},
    {23, value<double, renderReal>, ALA_KIND_REAL},
    {26, value<std::int16_t, renderShort>, ALA_KIND_INTEGER},
    {27, value<GEN_simpleName, renderSimpleName>},
    {28, value<GEN_text, renderText>},
    {31, value<GEN_cardinal64, renderCardinal64>, ALA_KIND_INTEGER},
    {34, value<GEN_cardinalOrNoid, formatted<ALA__CardOrNoidToAscii>>},
    {39, value<GEN_deliveryAddress, renderDeliveryAddress>},
    {42, chain<GEN_distNameStringSeq, &GEN_distNameStringSeq::_value, renderDistNameSeq>},
    {43, value<GEN_documentFormat, formatted<ALA__DocFormatToAscii>>},
    {44, value<GEN_edge_t, formatted<ALA__EdgeToAscii>>},
    {46, value<GEN_finishing, formatted<ALA__FinishingToAscii>>},
    {48, value<GEN_generalizedTime, renderTime>, ALA_KIND_TIME},
    {60, chain<GEN_nameOrOidSeq, &GEN_nameOrOidSeq::_value, renderNameOrOidSeq>},
    {62, value<double, renderReal>, ALA_KIND_REAL},
    {67, value<GEN_mediaSelect, formatted<ALA__MedSelectToAscii>>},
    {68, value<GEN_pageOrderType_t, renderPageOrder>},
    {69, chain<GEN_pageSelectSeq, &GEN_pageSelectSeq::value, renderPageSelectSeq>},
    {75, value<std::int16_t, renderShort>, ALA_KIND_INTEGER},
    {81, value<GEN_resultsProfile, renderResultsProfile>},
    {91, chain<GEN_mediaConsumedSeq, &GEN_mediaConsumedSeq::_value, renderMediaConsumedSeq>},
    {93, chain<GEN_setOfObjId, &GEN_setOfObjId::value, renderSetOfObjId>},
};

static_assert(std::adjacent_find(std::begin(kRows), std::end(kRows),
                                 [](const ValueType &a, const ValueType &b) { return a.type >= b.type; }) ==
                  std::end(kRows),
              "one row a type, in ascending order");

static constexpr std::size_t kTypes = std::end(kRows)[-1].type + 1;

static constexpr std::array<const ValueType *, kTypes> rowsByType() {
    std::array<const ValueType *, kTypes> rows = {};
    for (const ValueType &row : kRows)
        rows[row.type] = &row;
    return rows;
}

static constexpr std::array<const ValueType *, kTypes> kRowsByType = rowsByType();

const ValueType *qvledger::findValueType(AS_attrValType_t type) {
    return type < kTypes ? kRowsByType[type] : nullptr;
}

// ---- Unpacking ----

static void *unpackAsItIs(XdrReader &in) {
    const auto bytes = in.remainder();
    auto *copy = static_cast<std::uint8_t *>(in.allocate(bytes.size()));
    if (copy != nullptr)
        std::copy(bytes.begin(), bytes.end(), copy);
    return copy;
}

static void deleteValue(STF_l__hdr *, void *value, void *) {
    ValueMemory::release(value);
}

std::int32_t ODP_UnpackAV(STF_l__hdr *, std::int32_t in_length, const void *inp_bytes,
                          AS_attrValType_t in_type, void **outpp_value, AS_attrValDesc_t *outp_desc) {
    *outpp_value = nullptr;
    *outp_desc = {nullptr, deleteValue};
    if (in_length < 0 || inp_bytes == nullptr)
        return ODP_E_REFUSED;
    ValueMemory memory;
    XdrReader in({static_cast<const std::uint8_t *>(inp_bytes), static_cast<std::size_t>(in_length)}, memory);
    const ValueType *row = findValueType(in_type);
    void *value = row != nullptr ? row->form.unpack(in) : unpackAsItIs(in);
    if (in.outOfMemory())
        return ODP_E_NO_MEMORY;
    if (!in.isWhole())
        return ODP_E_REFUSED;
    if (value != nullptr)
        memory.handOver();
    *outpp_value = value;
    return 0;
}
