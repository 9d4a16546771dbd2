// Memory from malloc, released when its owner goes; release() hands it on.
#pragma once

#include <cstdlib>
#include <memory>

struct FreeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};

template <class T>
using Malloced = std::unique_ptr<T, FreeDeleter>;
