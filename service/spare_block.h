// A block of memory that is kept from its release to the next time one is asked for, one a thread and use.
//
// What is made and released in turn, once a value, would go through malloc and free each time, which costs as
// much as a good part of the rendering.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <utility>

#include "service/thread.h"

namespace qvledger {

// Use: a type that tells the uses apart.
template <class Use, std::size_t kSize>
class SpareBlock {
public:
    // Of kSize bytes; null when memory runs out.
    static void *allocate() {
        void *kept = std::exchange(spare, nullptr);
        return kept != nullptr ? kept : std::malloc(kSize);
    }

    // Takes back what allocate() gave, in whichever thread.
    static void release(void *block) {
        if (spare == nullptr && (entered || enter()))
            spare = block;
        else
            std::free(block);
    }

private:
    static bool enter() {
        static ThreadsEnd end([](void *) { std::free(std::exchange(spare, nullptr)); });
        return entered = end.enter(&spare);
    }

    static inline thread_local void *spare = nullptr;
    static inline thread_local bool entered = false;
};

} // namespace qvledger
