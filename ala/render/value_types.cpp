// What each value type number stands for.
#include "ala/render/renderers.h"

#include <algorithm>
#include <array>
#include <iterator>

static constexpr RenderRow kRows[] = {
    {0, "boolean", renderBoolean},
    {1, "integer", renderInt},
    {4, "delta time", renderDeltaTime},
    {6, "distinguished name string", renderDistName},
    {8, "event handling profile", renderEventHandlingProfile},
    {9, "font reference", renderFontReference},
    {10, "object identifier", renderOid},
    {11, "ignored attribute", renderIgnoredAttribute},
    {12, "integer", renderInt},
    {14, "characters", renderCharacters},
    {16, "text", renderText},
    {18, "name or object identifier", renderNameOrOid},
    {20, "octet string", renderOctets},
    {22, "integer", renderInt},
    {23, "real", renderReal},
    {26, "short integer", renderShort},
    {27, "simple name", renderSimpleName},
    {28, "text", renderText},
    {31, "64-bit cardinal", renderCardinal64},
    {34, "cardinal or name", renderCardinalOrName},
    {39, "delivery address", renderDeliveryAddress},
    {42, "sequence of distinguished name strings", renderDistNameSeq},
    {43, "document format", renderDocumentFormat},
    {44, "edge", renderEdge},
    {46, "finishing", renderFinishing},
    {48, "generalized time", renderTime},
    {60, "sequence of names or object identifiers", renderNameOrOidSeq},
    {62, "real", renderReal},
    {67, "media selection", renderMediaSelect},
    {68, "page order", renderPageOrder},
    {69, "sequence of page selections", renderPageSelectSeq},
    {75, "short integer", renderShort},
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

const RenderRow *findRenderRow(AS_attrValType_t in_type) {
    return in_type < kTypes ? kRowsByType[in_type] : nullptr;
}
