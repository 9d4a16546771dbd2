#include "service/messages/message.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include <iconv.h>
#include <langinfo.h>
#include <nl_types.h>

// ---- The catalogue ----

constexpr std::uint32_t kNumberMask = 0xffff; // the part of a code that is the message's number in its set
constexpr unsigned kSetShift = 16;

// catopen's result on failure.
static const nl_catd kNoCatalogue = reinterpret_cast<nl_catd>(std::intptr_t{-1});
static nl_catd catalogue = kNoCatalogue;

// Opens a catalogue in this installation's folder, because the C library may search only other folders.
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

// ---- The texts' character set ----

// Catalogues are in UTF-8, but a terminal uses the character set of the locale.
constexpr std::size_t kFailed = static_cast<std::size_t>(-1); // iconv's result on failure
static const iconv_t kNoConverter = reinterpret_cast<iconv_t>(std::intptr_t{-1});
static iconv_t converter = kNoConverter;

static iconv_t openConverter() {
    const char *charset = nl_langinfo(CODESET);
    for (const char *asItIs : {"UTF-8", "ANSI_X3.4-1968"}) // ANSI_X3.4-1968: no locale was chosen
        if (std::strcmp(charset, asItIs) == 0)
            return kNoConverter;
    char target[64];
    const int length = std::snprintf(target, sizeof target, "%s//TRANSLIT", charset);
    return length < static_cast<int>(sizeof target) ? iconv_open(target, "UTF-8") : kNoConverter;
}

// Converts a text to the locale's character set, in the buffer.  Returns the unconverted text if it needs no
// conversion, cannot be converted, or does not fit the buffer.
static const char *inCharacterSet(const char *text, char (&buffer)[4096]) {
    if (converter == kNoConverter)
        return text;
    auto *from = const_cast<char *>(text); // iconv only reads the text
    std::size_t left = std::strlen(text) + 1;
    char *to = buffer;
    std::size_t room = sizeof buffer;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    return iconv(converter, &from, &left, &to, &room) != kFailed ? buffer : text;
}

// ---- Operations ----

void MSG_UsageBegin(const char *inp_catalogue) {
    MSG_UsageEnd();
    catalogue = catopen(inp_catalogue, NL_CAT_LOCALE);
    if (catalogue == kNoCatalogue)
        catalogue = openInstalled(inp_catalogue);
    if (catalogue != kNoCatalogue)
        converter = openConverter();
}

void MSG_UsageEnd() {
    if (catalogue != kNoCatalogue)
        catclose(catalogue);
    if (converter != kNoConverter)
        iconv_close(converter);
    catalogue = kNoCatalogue;
    converter = kNoConverter;
}

std::int32_t MSG_GetUnformatted(std::int32_t, std::uint32_t in_code, std::int32_t, std::uint32_t in_size,
                                std::uint32_t *outp_count, char *outp_buffer) {
    if (catalogue == kNoCatalogue)
        return 1;
    static const char absent = '\0'; // catgets returns this address if there is no message
    const char *text = catgets(catalogue, static_cast<int>(in_code >> kSetShift),
                               static_cast<int>(in_code & kNumberMask), &absent);
    if (text == &absent)
        return 1;
    char buffer[4096];
    text = inCharacterSet(text, buffer);
    const std::size_t length = std::strlen(text);
    if (length >= in_size)
        return 1;
    std::memcpy(outp_buffer, text, length + 1);
    if (outp_count != nullptr)
        *outp_count = static_cast<std::uint32_t>(length);
    return 0;
}
