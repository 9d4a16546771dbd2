// The process heap.  Flags must be 0.  HeapAlloc and HeapReAlloc return null on failure; HeapFree returns
// non-zero on success.
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

extern "C" {

HANDLE GetProcessHeap();
void *HeapAlloc(HANDLE in_heap, DWORD in_flags, std::size_t in_size);
void *HeapReAlloc(HANDLE in_heap, DWORD in_flags, void *in_block, std::size_t in_size);
BOOL HeapFree(HANDLE in_heap, DWORD in_flags, void *in_block);

} // extern "C"

#endif
