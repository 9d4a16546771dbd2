// Small owners of what an operation allocates, which release it unless the operation succeeds.
#pragma once

#include <memory>
#include <new>
#include <type_traits>

#include "platform/descriptor.h"
#include "platform/malloced.h"

namespace qvledger {

// A zeroed record, or null.
template <class T>
Malloced<T> makeZeroed() {
    static_assert(std::is_trivially_destructible_v<T>, "free() would not release its members");
    Malloced<T> record(static_cast<T *>(std::malloc(sizeof(T))));
    if (record != nullptr)
        *record = T{};
    return record;
}

// Owner of a malloc'ed record whose destructor releases its members.
struct DestroyDeleter {
    template <class T>
    void operator()(T *record) const {
        std::destroy_at(record);
        std::free(record);
    }
};
template <class T>
using Owned = std::unique_ptr<T, DestroyDeleter>;

// A zeroed record, or null.
template <class T>
Owned<T> makeOwned() {
    void *memory = std::malloc(sizeof(T));
    return Owned<T>(memory != nullptr ? new (memory) T{} : nullptr);
}

// An argument for a char ** parameter that returns a new text.  The owner receives the text only at the end
// of the full expression that contains the call.
class TextOut {
public:
    explicit TextOut(Malloced<char> &owner) : owner_(owner) {}
    ~TextOut() { owner_.reset(text_); }
    TextOut(const TextOut &) = delete;
    TextOut &operator=(const TextOut &) = delete;
    operator char **() { return &text_; }

private:
    Malloced<char> &owner_;
    char *text_ = nullptr;
};

} // namespace qvledger
