#include "platform/os.h"

static thread_local DWORD gLastError = 0;

extern "C" {

DWORD GetLastError() {
    return gLastError;
}
void SetLastError(DWORD error) {
    gLastError = error;
}

} // extern "C"
