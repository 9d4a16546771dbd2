// The process heap is the C library's.
#include "platform/os.h"

#include <algorithm>
#include <cstdlib>

static char gHeap; // this variable's address is the handle of the only heap

extern "C" {

HANDLE GetProcessHeap() {
    return &gHeap;
}

void *HeapAlloc(HANDLE in_heap, DWORD in_flags, std::size_t in_size) {
    if (in_heap != &gHeap || in_flags != 0)
        return nullptr;
    return std::malloc(std::max<std::size_t>(in_size, 1));
}

void *HeapReAlloc(HANDLE in_heap, DWORD in_flags, void *in_block, std::size_t in_size) {
    if (in_heap != &gHeap || in_flags != 0 || in_block == nullptr)
        return nullptr;
    return std::realloc(in_block, std::max<std::size_t>(in_size, 1)); // a size of 0 would free the block
}

BOOL HeapFree(HANDLE in_heap, DWORD, void *in_block) {
    if (in_heap != &gHeap)
        return 0;
    std::free(in_block);
    return 1;
}

} // extern "C"
