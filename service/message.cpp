#include "service/message.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <initializer_list>
#include <limits>

#include <nl_types.h>
#include <sys/single_threaded.h>

// ---- The catalogue ----

constexpr std::uint32_t kNumberMask = 0xffff; // the part of a code that is the message's number in its set
constexpr unsigned kSetShift = 16;

// catopen's result without a catalogue.
static const nl_catd kNoCatalogue = reinterpret_cast<nl_catd>(std::intptr_t{-1});
static nl_catd catalogue = kNoCatalogue;

// A catalogue of this installation, whose folder need not be one that the C library looks into.
static nl_catd openInstalled(const char *name) {
    char language[64] = "";
    if (const char *locale = std::setlocale(LC_MESSAGES, nullptr); locale != nullptr)
        std::snprintf(language, sizeof language, "%s", locale);
    nl_catd found = kNoCatalogue;
    for (const char *end : {".@", "_"}) { // "de_DE.UTF-8": first de_DE, then de
        language[std::strcspn(language, end)] = '\0';
        char path[512];
        const int length =
            std::snprintf(path, sizeof path, "%s/%s/LC_MESSAGES/%s", QVLEDGER_LOCALEDIR, language, name);
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
    const char *text = catgets(catalogue, static_cast<int>(in_code >> kSetShift),
                               static_cast<int>(in_code & kNumberMask), &absent);
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

static bool put(std::FILE *stream, const char *text, std::size_t length) {
#ifdef __GLIBC__
    // What putc_unlocked does in place for one character, for all of them.
    if (stream->_IO_write_end - stream->_IO_write_ptr > static_cast<std::ptrdiff_t>(length)) {
        std::memcpy(stream->_IO_write_ptr, text, length);
        stream->_IO_write_ptr += length;
        return true;
    }
#endif
    return fwrite_unlocked(text, 1, length, stream) == length;
}

static std::size_t lengthOf(const char *text) {
    const bool isOne = text[0] != '\0' && text[1] == '\0'; // as separators are
    return isOne ? 1 : std::strlen(text);
}

static std::int32_t countOf(std::size_t characters) {
    if (characters <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return static_cast<std::int32_t>(characters);
    errno = EOVERFLOW;
    return -1;
}

// The formats that the report is written with, at a fraction of what the general formatter costs.
static bool isTwoTexts(const char *format) {
    constexpr char kTwoTexts[] = "%s%s";
    for (std::size_t i = 0; i < sizeof kTwoTexts; ++i)
        if (format[i] != kTwoTexts[i])
            return false;
    return true;
}

static std::int32_t putTwoTexts(std::FILE *stream, const char *givenFirst, const char *givenSecond) {
    const char *const first = givenFirst != nullptr ? givenFirst : "(null)";
    const char *const second = givenSecond != nullptr ? givenSecond : "(null)";
    const std::size_t firstLength = lengthOf(first);
    const std::size_t secondLength = lengthOf(second);
    if (!put(stream, first, firstLength) || !put(stream, second, secondLength))
        return -1;
    return countOf(firstLength + secondLength);
}

static std::int32_t putLiteral(std::FILE *stream, const char *format) {
    const std::size_t length = lengthOf(format);
    return put(stream, format, length) ? countOf(length) : -1;
}

static std::int32_t putFormatted(std::FILE *stream, const char *format, std::va_list values) {
    if (isTwoTexts(format)) {
        const char *first = va_arg(values, const char *);
        return putTwoTexts(stream, first, va_arg(values, const char *));
    }
    if (std::strchr(format, '%') == nullptr)
        return putLiteral(stream, format);
    return std::vfprintf(stream, format, values);
}

std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    const bool locks = __libc_single_threaded == 0;
    if (locks)
        flockfile(inp_stream);
    const std::int32_t result = putFormatted(inp_stream, in_format, values);
    if (locks)
        funlockfile(inp_stream);
    va_end(values);
    return result;
}
