#include "service/message.h"

#include <clocale>
#include <cstring>
#include <initializer_list>

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

std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    const int result = std::vfprintf(inp_stream, in_format, values);
    va_end(values);
    return result;
}

// ---- Texts without a format ----

static std::size_t lengthOf(const char *text) {
    const bool isOne = text[0] != '\0' && text[1] == '\0'; // as separators are
    return isOne ? 1 : std::strlen(text);
}

// What putc_unlocked does in place for one character, for all of them.  False where that is not to be had.
static bool putInBuffer([[maybe_unused]] std::FILE *stream, [[maybe_unused]] const char *text,
                        [[maybe_unused]] std::size_t length) {
#ifdef __GLIBC__
    if (__libc_single_threaded != 0 &&
        stream->_IO_write_end - stream->_IO_write_ptr > static_cast<std::ptrdiff_t>(length)) {
        std::memcpy(stream->_IO_write_ptr, text, length);
        stream->_IO_write_ptr += length;
        return true;
    }
#endif
    return false;
}

void MSG_PutText(std::FILE *inp_stream, const char *inp_text) {
    const std::size_t length = lengthOf(inp_text);
    if (!putInBuffer(inp_stream, inp_text, length))
        std::fwrite(inp_text, 1, length, inp_stream);
}
