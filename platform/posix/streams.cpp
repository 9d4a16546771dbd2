#include "platform/os.h"

#include <cstdlib>

#include <sys/types.h>

namespace {

struct Stream {
    OS_writer writer;
    void *context;
};

} // namespace

int _fileno(std::FILE *inp_stream) {
    return fileno(inp_stream);
}

static ssize_t writeTo(void *givenStream, const char *bytes, std::size_t size) {
    const auto *stream = static_cast<const Stream *>(givenStream);
    return static_cast<ssize_t>(stream->writer(stream->context, bytes, size));
}

static int closeStream(void *stream) {
    std::free(stream);
    return 0;
}

std::FILE *OS_StreamTo(OS_writer in_writer, void *inp_context) {
    auto *stream = static_cast<Stream *>(std::malloc(sizeof(Stream)));
    if (stream == nullptr)
        return nullptr;
    *stream = {in_writer, inp_context};
    std::FILE *made = fopencookie(stream, "w", {nullptr, writeTo, nullptr, closeStream});
    if (made == nullptr)
        std::free(stream);
    return made;
}

int OS_FlushStream(std::FILE *inp_stream) {
    return std::fflush(inp_stream);
}

int OS_CloseStream(std::FILE *inp_stream) {
    return std::fclose(inp_stream);
}
