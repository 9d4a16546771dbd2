// Memory from malloc, released when its owner goes; release() hands it on.
#pragma once

#include <cstdlib>
#include <memory>

struct FreeDeleter {
    void operator()(void *inp_memory) const { std::free(inp_memory); }
};

template <class T>
using Malloced = std::unique_ptr<T, FreeDeleter>;
