// The C library's streams, above and beneath.
#pragma once

#include "platform/os/types.h"

// Takes bytes of a stream: how many it took, 0 for a failure, with errno set.
using OS_writer = std::size_t (*)(void *inp_context, const char *inp_bytes, std::size_t in_size);

extern "C" {

#ifndef _WIN32
int _fileno(std::FILE *inp_stream);
#endif

// A stream for writing whose bytes go to a function, at the latest when it is flushed; null on failure.  It
// is flushed and closed by the operations below alone, with the results of fflush and fclose.
std::FILE *OS_StreamTo(OS_writer in_writer, void *inp_context);
int OS_FlushStream(std::FILE *inp_stream);
int OS_CloseStream(std::FILE *inp_stream);

} // extern "C"
