// Owners of a few lines for what an operation holds until it succeeds.
#pragma once

#include "platform/descriptor.h"
#include "platform/malloced.h"

// A zeroed record, or null.
template <class T>
Malloced<T> makeZeroed() {
    Malloced<T> record(static_cast<T *>(std::malloc(sizeof(T))));
    if (record != nullptr)
        *record = T{};
    return record;
}

// Receives what an operation hands out through a char ** argument.  The owner has it at the end of the full
// expression that holds the call, not before.
class TextOut {
public:
    explicit TextOut(Malloced<char> &inoutp_owner) : owner(inoutp_owner) {}
    ~TextOut() { owner.reset(text); }
    TextOut(const TextOut &) = delete;
    TextOut &operator=(const TextOut &) = delete;
    operator char **() { return &text; }

private:
    Malloced<char> &owner;
    char *text = nullptr;
};
