// The operations that need no handle: version, texts of return codes, log callback.
#include "ala/ala.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "ala/base/trace.h"
#include "service/log/log.h"

namespace {

constexpr std::size_t kTextSize = 128; // maximum bytes of a code's text with its NUL

struct CodeText {
    ALA_retCode_t code;
    const char *name;
    std::array<char, kTextSize> text;
};

} // namespace

// Makes the text "NAME: meaning" from a code's name and its log text without the line end.  If the name or
// the log text is empty, the text is the other part alone.
static constexpr CodeText codeText(ALA_retCode_t code, const char *codeName, std::string_view logText) {
    const std::string_view name = codeName;
    if (logText.ends_with('\n'))
        logText.remove_suffix(1);
    CodeText row = {code, codeName, {}};
    std::size_t size = 0;
    for (const std::string_view part :
         {name, std::string_view(name.empty() || logText.empty() ? "" : ": "), logText})
        for (const char character : part)
            row.text.at(size++) = character; // a text of more than kTextSize bytes does not compile
    return row;
}

static constexpr CodeText kCodeTexts[] = {
#define ALA_RETURN_CODE(number, name, message, logText) codeText(number, #name, logText),
#define ALA_UNNAMED_CODE(number, message, logText) codeText(number, "", logText),
#include "ala/return_codes.inc"
};

const char *ALA_Version() {
    return ALA_VERSION;
}

static const CodeText &rowOf(ALA_retCode_t code) {
    static constexpr CodeText kUnknown = {ALA_N_NORMAL, "unknown", {"unknown return code"}};
    const auto *row = std::ranges::find(kCodeTexts, code, &CodeText::code);
    return row != std::end(kCodeTexts) ? *row : kUnknown;
}

const char *ALA_CodeText(ALA_retCode_t code) {
    return rowOf(code).text.data();
}

const char *qvledger::codeName(ALA_retCode_t code) {
    return rowOf(code).name;
}

void ALA_SetLogSink(ALA_logSink_t sink, void *context) {
    LOG_SetFunction(sink, context);
}
