// Numbers, enumerations and times.
#include "ala/render/renderers.h"

#include <charconv>

#include "ala/render/times.h"

template <class Record>
static const Record &as(const void *inp_value) {
    return *static_cast<const Record *>(inp_value);
}

const RenderFailure *renderBoolean(Rendering &inoutp_rendering, const void *inp_value) {
    const GEN_boolean_t value = as<GEN_boolean_t>(inp_value);
    if (value == 0 || value == 1)
        inoutp_rendering.text.add(value == 1 ? "true" : "false");
    return nullptr;
}

const RenderFailure *renderInt(Rendering &inoutp_rendering, const void *inp_value) {
    inoutp_rendering.text.addNumber(as<std::int32_t>(inp_value));
    return nullptr;
}

const RenderFailure *renderShort(Rendering &inoutp_rendering, const void *inp_value) {
    inoutp_rendering.text.addNumber(as<std::int16_t>(inp_value));
    return nullptr;
}

// As "%f" in the C locale: a report's numbers read the same everywhere.
const RenderFailure *renderReal(Rendering &inoutp_rendering, const void *inp_value) {
    char digits[330]; // the largest has 309 before the point
    const auto end =
        std::to_chars(digits, digits + sizeof digits, as<double>(inp_value), std::chars_format::fixed, 6);
    inoutp_rendering.text.add({digits, end.ptr});
    return nullptr;
}

const RenderFailure *renderCardinal64(Rendering &inoutp_rendering, const void *inp_value) {
    std::uint64_t i64 = 0;
    GEN_GenToUint64(&i64, static_cast<const GEN_cardinal64 *>(inp_value));
    inoutp_rendering.text.addNumber(i64);
    return nullptr;
}

const RenderFailure *renderPageOrder(Rendering &inoutp_rendering, const void *inp_value) {
    static constexpr const char *kOrders[] = {"unknown", "first-to-last", "last-to-first"};
    constexpr GEN_pageOrderType_t kFirst = 2;
    const GEN_pageOrderType_t order = as<GEN_pageOrderType_t>(inp_value);
    const bool valid = order >= kFirst && order < kFirst + static_cast<std::int32_t>(std::size(kOrders));
    inoutp_rendering.text.add(valid ? kOrders[order - kFirst] : "error type");
    return nullptr;
}

const RenderFailure *renderTime(Rendering &inoutp_rendering, const void *inp_value) {
    static constexpr RenderFailure kNoLocalTime = {ALA_A_FAIL_TO_GET_TIME,
                                                   "ALA__GeneralizedToLocalTime failed in ALA__GetAttribute"};
    static constexpr RenderFailure kNoText = {ALA_A_FAIL_TO_GET_TIME,
                                              "ALA__GeneralizedTimeToAscii failed in ALA__GetAttribute"};
    GEN_generalizedTime localTime = {};
    if (ALA__GeneralizedToLocalTime(static_cast<const GEN_generalizedTime *>(inp_value), &localTime) != 0)
        return &kNoLocalTime;
    char clock[kClockTimeSize];
    if (const std::string_view shown = ALA__ClockTime(localTime, clock); !shown.empty()) {
        inoutp_rendering.text.add(shown);
        return nullptr;
    }
    char *text = nullptr;
    if (ALA__GeneralizedTimeToAscii(&localTime, inoutp_rendering.locale, &text) != 0)
        return &kNoText;
    inoutp_rendering.replaceText(text);
    return nullptr;
}
