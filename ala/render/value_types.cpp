// What each value type number stands for.
#include "ala/render/value_types.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "ala/render/formatters.h"
#include "ala/render/identifiers.h"
#include "ala/render/name_lookup.h"
#include "ala/render/profiles.h"
#include "ala/render/scalars.h"
#include "ala/render/text_types.h"

using namespace qvledger;

// What a formatter takes: a status, the database handle, the text it appends to, and the value.
template <class Value>
using Formatter = void(STF_l__hdr *, void *, Text &, const Value *);

template <class Value>
static const Value *valueFor(Formatter<Value> *, const void *value) {
    return static_cast<const Value *>(value);
}

// The render function of a type whose text a formatter makes.
template <auto *kFormatter>
static const RenderFailure *formatted(Rendering &rendering, const void *value) {
    kFormatter(rendering.status, *rendering.oidHandle, rendering.text, valueFor(kFormatter, value));
    return nullptr;
}

static constexpr RenderRow kRows[] = {
    {0, "boolean", renderBoolean},
    {1, "integer", renderInt, ALA_KIND_INTEGER},
    {4, "delta time", formatted<ALA__DeltaTimeToAscii>},
    {6, "distinguished name string", renderDistName},
    {8, "event handling profile", renderEventHandlingProfile},
    {9, "font reference", formatted<ALA__FontReferenceToAscii>},
    {10, "object identifier", renderOid},
    {11, "ignored attribute", renderIgnoredAttribute},
    {12, "integer", renderInt, ALA_KIND_INTEGER},
    {14, "characters", renderCharacters},
    {16, "text", renderText},
    {18, "name or object identifier", formatted<ALA__NameOrOidToAscii>},
    {20, "octet string", renderOctets},
    {22, "integer", renderInt, ALA_KIND_INTEGER},
    {23, "real", renderReal},
    {26, "short integer", renderShort, ALA_KIND_INTEGER},
    {27, "simple name", renderSimpleName},
    {28, "text", renderText},
    {31, "64-bit cardinal", renderCardinal64, ALA_KIND_INTEGER},
    {34, "cardinal or name", formatted<ALA__CardOrNoidToAscii>},
    {39, "delivery address", renderDeliveryAddress},
    {42, "sequence of distinguished name strings", renderDistNameSeq},
    {43, "document format", formatted<ALA__DocFormatToAscii>},
    {44, "edge", formatted<ALA__EdgeToAscii>},
    {46, "finishing", formatted<ALA__FinishingToAscii>},
    {48, "generalized time", renderTime, ALA_KIND_TIME},
    {60, "sequence of names or object identifiers", renderNameOrOidSeq},
    {62, "real", renderReal},
    {67, "media selection", formatted<ALA__MedSelectToAscii>},
    {68, "page order", renderPageOrder},
    {69, "sequence of page selections", renderPageSelectSeq},
    {75, "short integer", renderShort, ALA_KIND_INTEGER},
    {81, "results profile", renderResultsProfile},
    {91, "sequence of media consumed", renderMediaConsumedSeq},
    {93, "set of object identifications", renderSetOfObjId},
};

static_assert(std::adjacent_find(std::begin(kRows), std::end(kRows),
                                 [](const RenderRow &a, const RenderRow &b) { return a.type >= b.type; }) ==
                  std::end(kRows),
              "one row a type, in ascending order");

static constexpr std::size_t kTypes = std::end(kRows)[-1].type + 1;

static constexpr std::array<const RenderRow *, kTypes> rowsByType() {
    std::array<const RenderRow *, kTypes> rows = {};
    for (const RenderRow &row : kRows)
        rows[row.type] = &row;
    return rows;
}

static constexpr std::array<const RenderRow *, kTypes> kRowsByType = rowsByType();

const RenderRow *qvledger::findRenderRow(AS_attrValType_t type) {
    return type < kTypes ? kRowsByType[type] : nullptr;
}
