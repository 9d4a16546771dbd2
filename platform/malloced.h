// Owner of memory from malloc.  Its destructor frees the memory; release() passes the ownership to the
// calling function.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace qvledger {

struct FreeDeleter {
    void operator()(void *memory) const { std::free(memory); }
};

template <class T>
using Malloced = std::unique_ptr<T, FreeDeleter>;

// Resizes the memory to a number of bytes and keeps the contents; an empty owner gets new memory.  Returns
// false, with the memory unchanged, when memory runs out.  REQUIRES: bytes is not 0.
template <class T>
bool resize(Malloced<T> &memory, std::size_t bytes) {
    static_assert(std::is_trivially_copyable_v<T>, "its bytes are all that moves");
    void *resized = std::realloc(memory.get(), bytes);
    if (resized == nullptr)
        return false;
    static_cast<void>(memory.release()); // realloc has reused or freed the old block
    memory.reset(static_cast<T *>(resized));
    return true;
}

} // namespace qvledger
