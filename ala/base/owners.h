// Small classes that own memory which an operation allocates.  They release the memory if the operation
// fails.
#pragma once

#include <memory>
#include <new>
#include <type_traits>

#include "platform/descriptor.h"
#include "platform/malloced.h"

namespace qvledger {

// Allocates a zeroed object of a type without a destructor.  Null when memory runs out.
template <class T>
Malloced<T> makeZeroed() {
    static_assert(std::is_trivially_destructible_v<T>, "free() would not release its members");
    Malloced<T> record(static_cast<T *>(std::malloc(sizeof(T))));
    if (record != nullptr)
        *record = T{};
    return record;
}

// Owned<T> owns a malloc'ed object with a destructor, which releases the object's members.
struct DestroyDeleter {
    template <class T>
    void operator()(T *record) const {
        std::destroy_at(record);
        std::free(record);
    }
};
template <class T>
using Owned = std::unique_ptr<T, DestroyDeleter>;

// Allocates a zeroed object of a type with a destructor.  Null when memory runs out.
template <class T>
Owned<T> makeOwned() {
    void *memory = std::malloc(sizeof(T));
    return Owned<T>(memory != nullptr ? new (memory) T{} : nullptr);
}

// Passes an owner as the argument for a char ** parameter that returns a new text.  The owner receives the
// text only at the end of the full expression that contains the call.
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
