#include "service/messages/message.h"

#include <climits>

#include "platform/malloced.h"
#include "service/messages/format.h"

using namespace qvledger;

// ---- Formatted output ----

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
