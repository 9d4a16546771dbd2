#include "platform/os.h"

// _read is the system's own here and reads nothing ahead.
OS_readAhead *OS_ReadAheadOf(int) {
    return nullptr;
}
