// Renders numbers, enumerations and times.
#include "ala/render/scalars.h"

#include <charconv>

#include "ala/render/times.h"

using namespace qvledger;

const RenderFailure *qvledger::renderBoolean(Rendering &rendering, const GEN_boolean_t &value) {
    if (value == 0 || value == 1)
        rendering.text.add(value == 1 ? "true" : "false");
    return nullptr;
}

const RenderFailure *qvledger::renderInt(Rendering &rendering, const std::int32_t &value) {
    rendering.text.addNumber(value);
    return nullptr;
}

const RenderFailure *qvledger::renderShort(Rendering &rendering, const std::int16_t &value) {
    rendering.text.addNumber(value);
    return nullptr;
}

// Renders the number as "%f" does in the C locale, so that reports show numbers alike in all locales.
const RenderFailure *qvledger::renderReal(Rendering &rendering, const double &value) {
    char digits[330]; // a double has up to 309 digits before the decimal point
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6);
    rendering.text.add({digits, end.ptr});
    return nullptr;
}

const RenderFailure *qvledger::renderCardinal64(Rendering &rendering, const GEN_cardinal64 &value) {
    std::uint64_t i64 = 0;
    GEN_GenToUint64(&i64, &value);
    rendering.text.addNumber(i64);
    return nullptr;
}

const RenderFailure *qvledger::renderPageOrder(Rendering &rendering, const GEN_pageOrderType_t &order) {
    static constexpr const char *kOrders[] = {"unknown", "first-to-last", "last-to-first"};
    constexpr GEN_pageOrderType_t kFirst = 2;
    const bool valid = order >= kFirst && order < kFirst + static_cast<std::int32_t>(std::size(kOrders));
    rendering.text.add(valid ? kOrders[order - kFirst] : "error type");
    return nullptr;
}

const RenderFailure *qvledger::renderTime(Rendering &rendering, const GEN_generalizedTime &value) {
    static constexpr RenderFailure kNoLocalTime = {ALA_A_FAIL_TO_GET_TIME,
                                                   "ALA__GeneralizedToLocalTime failed in ALA__GetAttribute"};
    static constexpr RenderFailure kNoText = {ALA_A_FAIL_TO_GET_TIME,
                                              "ALA__GeneralizedTimeToAscii failed in ALA__GetAttribute"};
    if (rendering.context.timeForm == ALA_TIME_ISO_8601) {
        char text[kIsoTimeSize];
        const std::string_view shown = isoTime(value, text);
        rendering.text.add(shown);
        return shown.empty() ? &kNoLocalTime : nullptr;
    }
    GEN_generalizedTime localTime = {};
    PlainDays *const days = rendering.context.plainDays;
    if (!(days != nullptr && localOnPlainDay(*days, value, &localTime)) &&
        ALA__GeneralizedToLocalTime(&value, &localTime) != 0)
        return &kNoLocalTime;
    char clock[kClockTimeSize];
    if (const std::string_view shown = clockTime(localTime, clock); !shown.empty()) {
        rendering.text.add(shown);
        return nullptr;
    }
    char *text = nullptr;
    if (ALA__GeneralizedTimeToAscii(&localTime, nullptr, &text) != 0)
        return &kNoText;
    rendering.text.replace(text);
    return nullptr;
}
