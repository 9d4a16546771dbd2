#include "service/message.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <initializer_list>
#include <limits>

#include <nl_types.h>

// ---- The catalogue ----

constexpr int kMessageSet = 0x3b;
constexpr std::uint32_t kNumberMask = 0xffff; // the part of a code that is the message's number

// catopen's result without a catalogue.
static const nl_catd kNoCatalogue = reinterpret_cast<nl_catd>(std::intptr_t{-1});
static nl_catd catalogue = kNoCatalogue;

// A catalogue of this installation, whose folder need not be one that the C library looks into.
static nl_catd openInstalled(const char *inp_catalogue) {
    char language[64] = "";
    if (const char *locale = std::setlocale(LC_MESSAGES, nullptr); locale != nullptr)
        std::snprintf(language, sizeof language, "%s", locale);
    nl_catd found = kNoCatalogue;
    for (const char *end : {".@", "_"}) { // "de_DE.UTF-8": first de_DE, then de
        language[std::strcspn(language, end)] = '\0';
        char path[512];
        const int length = std::snprintf(path, sizeof path, "%s/%s/LC_MESSAGES/%s", QVLEDGER_LOCALEDIR,
                                         language, inp_catalogue);
        if (found == kNoCatalogue && length < static_cast<int>(sizeof path))
            found = catopen(path, 0);
    }
    return found;
}

void MSG_UsageBegin(const char *inp_catalogue) {
    MSG_UsageEnd();
    catalogue = catopen(inp_catalogue, NL_CAT_LOCALE);
    if (catalogue == kNoCatalogue)
        catalogue = openInstalled(inp_catalogue);
}

void MSG_UsageEnd() {
    if (catalogue != kNoCatalogue)
        catclose(catalogue);
    catalogue = kNoCatalogue;
}

std::int32_t MSG_GetUnformatted(std::int32_t, std::uint32_t in_code, std::int32_t, std::uint32_t in_size,
                                std::uint32_t *outp_count, char *outp_buffer) {
    if (catalogue == kNoCatalogue)
        return 1;
    static const char absent = '\0'; // known by its address
    const char *text = catgets(catalogue, kMessageSet, static_cast<int>(in_code & kNumberMask), &absent);
    if (text == &absent)
        return 1;
    const std::size_t length = std::strlen(text);
    if (length >= in_size)
        return 1;
    std::memcpy(outp_buffer, text, length + 1);
    if (outp_count != nullptr)
        *outp_count = static_cast<std::uint32_t>(length);
    return 0;
}

// ---- Formatted output ----

std::int32_t MSG_vsprintf(char *outp_buffer, const char *in_format, std::va_list in_values) {
    return std::vsprintf(outp_buffer, in_format, in_values);
}

std::int32_t MSG_sprintf(char *outp_buffer, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    const int result = std::vsprintf(outp_buffer, in_format, values);
    va_end(values);
    return result;
}

// Whether "%s" is the only conversion of a format.  The report is written field by field with such ones.
static bool hasOnlyTexts(const char *in_format) {
    const char *at = in_format;
    while ((at = std::strchr(at, '%')) != nullptr) {
        if (at[1] != 's')
            return false;
        at += 2;
    }
    return true;
}

static bool put(std::FILE *inp_stream, const char *inp_text, std::size_t in_length,
                std::size_t *inoutp_count) {
    *inoutp_count += in_length;
    if (in_length == 1)
        return putc_unlocked(*inp_text, inp_stream) != EOF;
    return fwrite_unlocked(inp_text, 1, in_length, inp_stream) == in_length;
}

// What vfprintf does for a format with only texts, without its cost.
static std::int32_t putTexts(std::FILE *inp_stream, const char *in_format, std::va_list in_values) {
    std::size_t count = 0;
    for (const char *at = in_format; *at != '\0';) {
        const std::size_t literal = std::strcspn(at, "%");
        if (literal != 0 && !put(inp_stream, at, literal, &count))
            return -1;
        at += literal;
        if (*at == '\0')
            break;
        const char *text = va_arg(in_values, const char *);
        if (text == nullptr)
            text = "(null)";
        if (!put(inp_stream, text, std::strlen(text), &count))
            return -1;
        at += 2;
    }
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        errno = EOVERFLOW;
        return -1;
    }
    return static_cast<std::int32_t>(count);
}

std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    flockfile(inp_stream);
    const std::int32_t result = hasOnlyTexts(in_format) ? putTexts(inp_stream, in_format, values)
                                                        : std::vfprintf(inp_stream, in_format, values);
    funlockfile(inp_stream);
    va_end(values);
    return result;
}
