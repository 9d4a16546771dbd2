#include "service/message.h"

#include <climits>
#include <cstring>

#ifdef __GLIBC__
#include <sys/single_threaded.h>
#endif

#include "platform/malloced.h"
#include "service/format.h"

using namespace qvledger;

// ---- Formatted output ----

std::int32_t MSG_vsnprintf(char *outp_buffer, std::size_t in_size, const char *in_format,
                           std::va_list in_values) {
    return formatText(outp_buffer, in_size, in_format, in_values);
}

std::int32_t MSG_vsprintf(char *outp_buffer, const char *in_format, std::va_list in_values) {
    return formatText(outp_buffer, INT_MAX, in_format, in_values);
}

std::int32_t MSG_sprintf(char *outp_buffer, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    const std::int32_t result = formatText(outp_buffer, INT_MAX, in_format, values);
    va_end(values);
    return result;
}

std::int32_t MSG_fprintf(std::FILE *inp_stream, const char *in_format, ...) {
    std::va_list values;
    va_start(values, in_format);
    const std::int32_t length = formatText(nullptr, 0, in_format, values);
    va_end(values);
    Malloced<char> text;
    if (length < 0 || !resize(text, static_cast<std::size_t>(length) + 1))
        return -1;
    va_start(values, in_format);
    formatText(text.get(), static_cast<std::size_t>(length) + 1, in_format, values);
    va_end(values);
    return std::fwrite(text.get(), 1, static_cast<std::size_t>(length), inp_stream) ==
                   static_cast<std::size_t>(length)
               ? length
               : -1;
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

bool MSG_PutText(std::FILE *inp_stream, const char *inp_text) {
    const std::size_t length = lengthOf(inp_text);
    return putInBuffer(inp_stream, inp_text, length) ||
           std::fwrite(inp_text, 1, length, inp_stream) == length;
}
